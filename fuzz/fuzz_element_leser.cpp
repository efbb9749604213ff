// libFuzzer target: the input through FuzzElementLeser (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzElementLeser({daten, größe});
    return 0;
}
