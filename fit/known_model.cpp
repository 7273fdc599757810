#include "fit/known_model.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/error.h"

namespace curvebank::fit {

KnownModel find_model(const Library &library, std::string_view name)
{
    const reference::ModelReference *about = reference::find(name);
    Model model = library.find(name);
    if (!model.function && about && about->export_only)
        model = {library.exported(about->name), 1, 1, static_cast<int>(about->parameters.size())};
    // Some models read a variable more than the catalogue counts.
    if (about) model.nIndep = std::max(model.nIndep, static_cast<int>(about->sample_ranges.size()));
    if (!model.function || !about) {
        const auto nearest = reference::nearest_names(name);
        throw Error(fmt::format("no model is called {}{}{}", name,
                                nearest.empty() ? "; try curvebank list" : "; did you mean ",
                                fmt::join(nearest, ", ")));
    }
    return {model, about};
}

const ExportedModel *find_export(std::string_view catalogue_name)
{
    for (const ExportedModel &entry : exported_models())
        if ((entry.catalogue_name.empty() ? entry.name : entry.catalogue_name) == catalogue_name) return &entry;
    return nullptr;
}

Shape shape(const KnownModel &known, int wanted)
{
    const reference::ModelReference &about = *known.about;
    if (about.placeholder) throw Error(fmt::format("{} is a placeholder: it computes nothing", about.name));
    const bool repeats = !about.repeated.empty();
    const int read = static_cast<int>(about.parameters.size());
    const int usual = repeats ? known.model.nParams : read;
    const int count = wanted > 0 ? wanted : usual;
    const auto names = about.names(count);
    if (!repeats && count != usual)
        throw Error(fmt::format("{} takes {} parameters, not {}", about.name, usual, count));
    if (static_cast<int>(names.size()) != count)
        throw Error(fmt::format("{} takes {} parameter{} and {} for every term; {} do not fit", about.name, read,
                                read == 1 ? "" : "s", about.repeated.size(), count));
    return {repeats ? count : known.model.nParams, names};
}

}  // namespace curvebank::fit
