// libFuzzer target: the input through FuzzTabellendatei (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzTabellendatei({daten, größe});
    return 0;
}
