// libFuzzer target: the input through FuzzCapabilities (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzCapabilities({daten, größe});
    return 0;
}
