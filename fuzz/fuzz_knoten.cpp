// libFuzzer target: the input through FuzzKnoten (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzKnoten({daten, größe});
    return 0;
}
