// Where a formula may stand for the calling contract.

#pragma once

#include <string_view>

namespace curvebank::fit {

/// Whether the formula of a catalogue model agrees with the contract to 1e-11 of the curve's size over its domain.
bool formula_agrees(std::string_view model);

}  // namespace curvebank::fit
