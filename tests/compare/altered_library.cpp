// A library that hands out the models of the real one, some of them altered: each in one thing that a comparison
// has to see, one in what it must not mind.

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "curvebank/curvebank.h"
#include "platform/names.h"
#include "platform/shared_library.h"

using namespace curvebank;

namespace {

/// What of a call is altered.
struct Ending {
    int32_t &result;
    int32_t *perr;
    double *x, *y, *dy;
};

void next_number(double &value)
{
    if (std::isfinite(value)) value = std::nextafter(value, 1e308);
}

struct Altered {
    const char *name;
    void (*alter)(const Ending &);
};

constexpr Altered altered[] = {
    {"Line", [](const Ending &call) { next_number(call.y[1]); }},
    {"Parabola", [](const Ending &call) { next_number(call.dy[3]); }},
    {"Cubic", [](const Ending &call) { call.x[1] = 0; }},
    {"Poly4", [](const Ending &call) { call.result ^= 1; }},
    {"Poly5", [](const Ending &) { errno = 34 - errno; }},
    {"Plane", [](const Ending &call) { *call.perr = 0; }},
    {"Hill", [](const Ending &call) { call.y[3] = 0; }},
    {"Sine",
     [](const Ending &call) {
         if (std::isnan(call.y[1])) call.y[1] = -std::nan("1");
     }},
};

const platform::SharedLibrary &real_library()
{
    static const platform::SharedLibrary opened(CURVEBANK_LIBRARY_FILE);
    return opened;
}

ModelFunc real[std::size(altered)];  // looked up beforehand: a call must leave errno to the model

template <size_t i>
int32_t call(int16_t flags, int32_t *perr, int16_t nParams, void *reserved4, int32_t reserved5, const double *p,
             void *reserved7, double *x, double *y, double *dy)
{
    int32_t result = real[i](flags, perr, nParams, reserved4, reserved5, p, reserved7, x, y, dy);
    altered[i].alter({result, perr, x, y, dy});
    return result;
}

template <size_t... i>
void replace(ModelFunc &found, const char *name, std::index_sequence<i...>)
{
    ((platform::same_name(name, altered[i].name) && (real[i] = found, found = call<i>)), ...);
}

}  // namespace

extern "C" {

ModelFunc Get_Func(const char *name, uint16_t *nIndep, uint16_t *nDep, uint16_t *nParams, uint16_t *reserved)
{
    ModelFunc found =
        real_library().function<decltype(&Get_Func)>("Get_Func")(name, nIndep, nDep, nParams, reserved);
    replace(found, name, std::make_index_sequence<std::size(altered)>());
    return found;
}

int32_t Boltzman1(int16_t flags, int32_t *perr, int16_t nParams, void *reserved4, int32_t reserved5,
                  const double *p, void *reserved7, double *x, double *y, double *dy)
{
    static const auto found = real_library().function<ModelFunc>("Boltzman1");
    return found(flags, perr, nParams, reserved4, reserved5, p, reserved7, x, y, dy);
}
}
