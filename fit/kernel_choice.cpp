#include "fit/kernels.h"
#include "formula/program.h"

namespace curvebank::fit {

namespace baseline {
extern const Kernels table;
}
namespace avx2 {
extern const Kernels table;
}
namespace avx512 {
extern const Kernels table;
}

const Kernels &kernels()
{
    static const Kernels &chosen = []() -> const Kernels & {
        switch (formula::best_instructions()) {
#ifdef CURVEBANK_VECTOR_KERNELS
            case formula::Instructions::avx512: return avx512::table;
            case formula::Instructions::avx2: return avx2::table;
#endif
            default: return baseline::table;
        }
    }();
    return chosen;
}

}  // namespace curvebank::fit
