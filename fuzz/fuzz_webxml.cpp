// libFuzzer target: the input through FuzzWebXml (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzWebXml({daten, größe});
    return 0;
}
