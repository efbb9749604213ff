// libFuzzer target: the input through FuzzNasEinlesen (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzNasEinlesen({daten, größe});
    return 0;
}
