// libFuzzer target: the input through FuzzWmsAntwort (fuzz/ziele.hpp).
#include "fuzz/ziele.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t größe) {
    flurix::fuzz::FuzzWmsAntwort({daten, größe});
    return 0;
}
