// libFuzzer target: the input through FuzzGrafbat (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzGrafbat({daten, größe});
    return 0;
}
