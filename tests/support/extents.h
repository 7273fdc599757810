// How far a call may go in its arrays.

#pragma once

#include <algorithm>

#include "catalogue/catalogue.h"
#include "reference/reference.h"

namespace curvebank::test {

/// The last entry of each array.
struct Extents {
    int p, x, y, dy;
};

/// What is known of the calls of one model.
class Reach {
public:
    explicit Reach(const ModelCatalogEntry &row) : row_(row), about_(*reference::find(row.name)) {}

    /// For a count with which the reference has a name for every parameter, its parameters and outputs; for any
    /// other the room that the contract asks for.
    Extents of(int nParams) const
    {
        const auto variables = std::max<int>(row_.nIndep, static_cast<int>(about_.sample_ranges.size()));
        const auto once = static_cast<int>(about_.parameters.size()),
                   each = static_cast<int>(about_.repeated.size());
        const bool fits =
            each > 0 ? nParams >= once + each && (nParams - once) % each == 0 : nParams == row_.nParams;
        if (!fits) {
            const int last = CURVEBANK_ROOM(std::max<int>(nParams, row_.nParams)) - 1;
            return {last, variables, last, last};
        }
        const int last = std::max(nParams, once) + about_.beyond;
        return {last, variables, about_.contributions ? 1 + std::max(1, about_.terms(nParams)) : row_.nDep, last};
    }

    const reference::ModelReference &about() const { return about_; }

private:
    const ModelCatalogEntry &row_;
    const reference::ModelReference &about_;
};

}  // namespace curvebank::test
