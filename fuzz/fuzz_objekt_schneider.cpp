// libFuzzer target: the input through FuzzObjektSchneider (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzObjektSchneider({daten, größe});
    return 0;
}
