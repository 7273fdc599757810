#include "host/reference.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string_view>

#define TOML_HEADER_ONLY 0
#include <toml++/toml.h>

#include "host/error.h"
#include "platform/name_compare.h"

namespace curvebank::host {

extern const std::vector<std::string_view> reference_tables;  // the text of every file in reference/

namespace {

std::vector<ParameterReference> read_parameters(const toml::node_view<const toml::node> &node)
{
    std::vector<ParameterReference> parameters;
    if (const toml::array *pairs = node.as_array())
        for (const toml::node &pair : *pairs)
            parameters.push_back(
                {pair.as_array()->at(0).value_or(std::string()), pair.as_array()->at(1).value_or(std::string())});
    return parameters;
}

ModelReference read_entry(const std::string &name, const toml::table &table)
{
    ModelReference entry;
    entry.name = name;
    entry.title = table["title"].value_or(std::string());
    entry.formula = table["formula"].value_or(std::string());
    entry.second = table["second"].value_or(std::string());
    entry.term = table["term"].value_or(std::string());
    entry.domain = table["domain"].value_or(std::string());
    entry.source = table["source"].value_or(std::string());
    entry.parameters = read_parameters(table["parameters"]);
    entry.repeated = read_parameters(table["repeated"]);
    entry.contributions = table["contributions"].value_or(false);
    entry.linear = table["linear"].value_or(false);
    entry.derivatives = table["derivatives"].value_or(std::string()) != "none";
    entry.implicit = table["implicit"].value_or(false);
    entry.placeholder = table["placeholder"].value_or(false);
    entry.export_only = table["export_only"].value_or(false);
    entry.tolerance = table["tolerance"].value_or(entry.tolerance);
    if (const toml::array *pairs = table["inexact"].as_array())
        for (const toml::node &pair : *pairs)
            entry.inexact.emplace_back(pair.as_array()->at(0).value_or(0),
                                       pair.as_array()->at(1).value_or(std::string()));
    if (const toml::array *values = table["sample"]["p"].as_array())
        for (const toml::node &value : *values) entry.sample_parameters.push_back(value.value_or(0.0));
    for (const char *variable : ModelReference::variables)
        if (const toml::array *range = table["sample"][variable].as_array())
            entry.sample_ranges.push_back({range->at(0).value_or(0.0), range->at(1).value_or(0.0)});
    return entry;
}

std::vector<ModelReference> read_tables()
{
    std::vector<ModelReference> entries;
    for (const std::string_view text : reference_tables)
        for (const auto &[name, table] : toml::parse(text))
            entries.push_back(read_entry(std::string(name.str()), *table.as_table()));
    std::sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) {
        return std::lexicographical_compare(a.name.begin(), a.name.end(), b.name.begin(), b.name.end(),
                                            [](char c, char d) { return std::tolower(c) < std::tolower(d); });
    });
    return entries;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

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

std::vector<ParameterReference> ModelReference::names(int count) const
{
    std::vector<ParameterReference> all = parameters;
    const int blocks = terms(count);
    for (int k = 1; k <= blocks; ++k)
        for (const auto &[parameter, meaning] : repeated)
            all.push_back({blocks > 1 ? parameter + std::to_string(k) : parameter, meaning});
    return all;
}

std::string ModelReference::text() const
{
    if (placeholder) return "nothing is computed";
    if (term.empty()) return formula;
    return (formula.empty() ? "" : formula + " + ") + "sum over k of " + term;
}

const std::vector<ModelReference> &reference()
{
    static const std::vector<ModelReference> entries = read_tables();
    return entries;
}

const ModelReference *find_reference(const std::string &name)
{
    for (const ModelReference &entry : reference())
        if (platform::same_name(entry.name.c_str(), name.c_str())) return &entry;
    return nullptr;
}

std::vector<std::string> nearest_names(const std::string &name)
{
    const std::string wanted = lower(name);
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const ModelReference &entry : reference()) {
        const std::string candidate = lower(entry.name);
        size_t distance = edit_distance(wanted, candidate);
        if (!wanted.empty() && candidate.find(wanted) != std::string::npos)
            distance = std::min(distance, size_t{1});
        if (distance <= std::max<size_t>(1, wanted.size() / 3)) ranked.emplace_back(distance, entry.name);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto &[distance, candidate] : ranked)
        if (names.size() < 5) names.push_back(candidate);
    return names;
}

}  // namespace curvebank::host
