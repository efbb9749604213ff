// libFuzzer target: the input through FuzzKonfigSuche (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzKonfigSuche({daten, größe});
    return 0;
}
