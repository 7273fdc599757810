#include "program/known_model.h"

#include <algorithm>
#include <array>
#include <string>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "curvebank/curvebank.h"
#include "curvebank/exports.h"
#include "platform/error.h"

namespace curvebank::program {
namespace {

#define LIST_ENTRY(name, ordinal, catalogue_name) ExportedModel{#name, ordinal, catalogue_name, name},
const std::array exported_models = {CURVEBANK_EXPORTED_MODELS(LIST_ENTRY)};
#undef LIST_ENTRY

}  // namespace

KnownModel find_model(std::string_view name)
{
    const reference::ModelReference *about = reference::find(name);
    uint16_t nIndep = 1, nDep = 1, nParams = 0;
    ModelFunc function = Get_Func(std::string(name).c_str(), &nIndep, &nDep, &nParams, nullptr);
    if (!function && about && about->export_only) {
        nParams = static_cast<uint16_t>(about->parameters.size());
        if (const ExportedModel *exported = find_export(about->name)) function = exported->function;
    }
    if (!function || !about) {
        const auto nearest = reference::nearest_names(name);
        throw Error(fmt::format("no model is called {}{}{}", name,
                                nearest.empty() ? "; try curvebank list" : "; did you mean ",
                                fmt::join(nearest, ", ")));
    }
    // Some models read a variable more than the catalogue counts.
    return {function, std::max<int>(nIndep, about->variable_count()), nDep, nParams, about};
}

const ExportedModel *find_export(std::string_view catalogue_name)
{
    for (const ExportedModel &entry : exported_models)
        if ((entry.catalogue_name.empty() ? entry.name : entry.catalogue_name) == catalogue_name) return &entry;
    return nullptr;
}

Shape shape(const KnownModel &known, int wanted)
{
    const reference::ModelReference &about = *known.about;
    if (about.placeholder) throw Error(fmt::format("{} is a placeholder: it computes nothing", about.name));
    const bool repeats = !about.repeated.empty();
    const int read = static_cast<int>(about.parameters.size());
    const int usual = repeats ? known.nParams : read;
    const int count = wanted > 0 ? wanted : usual;
    const auto names = about.names(count);
    if (!repeats && count != usual)
        throw Error(fmt::format("{} takes {} parameters, not {}", about.name, usual, count));
    if (static_cast<int>(names.size()) != count)
        throw Error(fmt::format("{} takes {} parameter{} and {} for every term; {} do not fit", about.name, read,
                                read == 1 ? "" : "s", about.repeated.size(), count));
    if (repeats && about.terms(count) > about.most_terms())
        throw Error(fmt::format("{} takes {} parameters, not {}: a call computes one term", about.name, usual, count));
    return {repeats ? count : known.nParams, names};
}

}  // namespace curvebank::program
