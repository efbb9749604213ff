// libFuzzer target: the input through FuzzZuordnung (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzZuordnung({daten, größe});
    return 0;
}
