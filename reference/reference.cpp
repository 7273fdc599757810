#include "reference/reference.h"

#include <algorithm>
#include <locale>
#include <numeric>
#include <utility>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/predicate.hpp>

namespace curvebank::reference {
namespace {

/// Levenshtein distance: insertions, deletions and replacements between two words.
size_t edit_distance(const std::string &a, const std::string &b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

int ModelReference::terms(int count) const
{
    if (repeated.empty()) return 0;
    return std::max(0, (count - static_cast<int>(parameters.size())) / static_cast<int>(repeated.size()));
}

const InexactReference *ModelReference::inexact_at(int i) const
{
    const auto once = static_cast<int>(parameters.size()), size = static_cast<int>(repeated.size());
    const int listed = i <= once || size == 0 ? i : once + 1 + (i - once - 1) % size;
    const auto found =
        std::find_if(inexact.begin(), inexact.end(), [listed](const auto &entry) { return entry.entry == listed; });
    return found == inexact.end() ? nullptr : &*found;
}

std::vector<NamedParameter> ModelReference::names(int count) const
{
    std::vector<NamedParameter> all;
    for (const ParameterReference &parameter : parameters) all.push_back({std::string(parameter.name), &parameter});
    const int blocks = terms(count);
    for (int k = 1; k <= blocks; ++k)
        for (const ParameterReference &parameter : repeated)
            all.push_back({std::string(parameter.name) + (blocks > 1 ? std::to_string(k) : ""), &parameter});
    return all;
}

std::string ModelReference::text() const
{
    if (placeholder) return "nothing is computed";
    if (term.empty()) return std::string(formula);
    return std::string(formula) + (formula.empty() ? "" : " + ") + "sum over k of " + std::string(term);
}

const ModelReference *find(std::string_view name)
{
    const auto found = std::find_if(models.begin(), models.end(), [name](const ModelReference &entry) {
        return boost::iequals(entry.name, name, std::locale::classic());
    });
    return found == models.end() ? nullptr : &*found;
}

std::vector<std::string_view> nearest_names(std::string_view name)
{
    const std::string wanted = boost::to_lower_copy(std::string(name));
    std::vector<std::pair<size_t, std::string_view>> ranked;
    for (const ModelReference &entry : models) {
        const std::string candidate = boost::to_lower_copy(std::string(entry.name));
        size_t distance = edit_distance(wanted, candidate);
        if (!wanted.empty() && candidate.find(wanted) != std::string::npos)
            distance = std::min(distance, size_t{1});
        if (distance <= std::max<size_t>(1, wanted.size() / 3)) ranked.emplace_back(distance, entry.name);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::string_view> names;
    for (const auto &[distance, candidate] : ranked)
        if (names.size() < 5) names.push_back(candidate);
    return names;
}

}  // namespace curvebank::reference
