// Calls of models made of arbitrary bytes, in arrays that are as long as the contract says and no longer.
//
// The input: model, flags, count of parameters, codes in the error variables (one byte each, the model two), then
// x[1], x[2], x[3], p[1], p[2], ... as doubles. What is missing is 0.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "tests/support/contract.h"
#include "tests/support/extents.h"

using namespace curvebank;
using test::CallState;

namespace {

class Input {
public:
    Input(const uint8_t *bytes, size_t size) : bytes_(bytes), size_(size) {}

    template <class T>
    T take()
    {
        T value{};
        const size_t taken = std::min(sizeof value, size_);
        std::memcpy(&value, bytes_, taken);
        bytes_ += taken;
        size_ -= taken;
        return value;
    }

private:
    const uint8_t *bytes_;
    size_t size_;
};

/// The call in arrays of its own, so that a step beyond one of them is seen.
CallState in_exact_arrays(ModelFunc model, CallState state, const test::Extents &end)
{
    const auto array = [](const CallState::Array &from, int last) {
        return std::vector<double>(from.begin(), from.begin() + last + 1);
    };
    const std::vector<double> p = array(state.p, end.p);
    std::vector<double> x = array(state.x, end.x), y = array(state.y, end.y), dy = array(state.dy, end.dy);
    state.run(model, p.data(), x.data(), y.data(), dy.data());
    std::copy(x.begin(), x.end(), state.x.begin());
    std::copy(y.begin(), y.end(), state.y.begin());
    std::copy(dy.begin(), dy.end(), state.dy.begin());
    return state;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    static constexpr int32_t codes[] = {0, 33, 34, 11};
    Input input(bytes, size);
    static const std::vector<test::Reach> reaches(std::begin(catalogue), std::end(catalogue));
    const size_t index = input.take<uint16_t>() % catalogue_size;
    const ModelCatalogEntry &row = catalogue[index];
    const test::Reach &reach = reaches[index];
    CallState before;
    before.flags = static_cast<int16_t>(input.take<uint8_t>() % 32);
    before.nParams = static_cast<int16_t>(
        test::fewest_parameters + input.take<uint8_t>() % (test::most_parameters - test::fewest_parameters + 1));
    const auto code = input.take<uint8_t>();
    before.runtime_code = codes[code % 4];
    before.caller_code = codes[code / 4 % 4];
    for (size_t i = 1; i <= 3; ++i) before.x[i] = input.take<double>();
    for (size_t i = 1; i < before.p.size(); ++i) before.p[i] = input.take<double>();
    before.y.fill(test::untouched);
    before.dy.fill(test::untouched);

    const test::Extents end = reach.of(before.nParams);
    const CallState after = in_exact_arrays(row.function, before, end);
    const std::string fault = test::fault(row, reach.about(), before, after);
    if (!fault.empty() || !same(after, in_exact_arrays(row.function, before, end))) {
        std::fprintf(stderr, "%s, flags %d, nParams %d: %s\n", row.name, before.flags, before.nParams,
                     fault.empty() ? "another result the second time" : fault.c_str());
        std::abort();
    }
    return 0;
}
