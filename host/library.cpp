#include "host/library.h"

#include <cstdlib>
#include <filesystem>

#include "curvebank/exports.h"
#include "host/error.h"

namespace curvebank::host {
namespace {

platform::SharedLibrary open_library(const std::string &file)
{
    try {
        return platform::SharedLibrary(file);
    } catch (const std::exception &reason) {
        throw Error(std::string("cannot load the library: ") + reason.what());
    }
}

}  // namespace

const std::vector<ExportedModel> &exported_models()
{
#define LIST_ENTRY(name, ordinal, catalogue_name) {#name, ordinal, catalogue_name},
    static const std::vector<ExportedModel> list = {CURVEBANK_EXPORTED_MODELS(LIST_ENTRY)};
#undef LIST_ENTRY
    return list;
}

Library::Library(const std::string &file)
    : library_(open_library(file)), get_func_(library_.function<GetFunc>("Get_Func"))
{
    if (!get_func_) throw Error(file + " is not a Curvebank library: it exports no Get_Func");
}

Library Library::standard()
{
    if (const char *file = std::getenv("CURVEBANK_LIBRARY")) return Library(file);
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const auto &folder : {program, program / CURVEBANK_LIBRARY_FROM_PROGRAM}) {
        const auto file = folder / CURVEBANK_LIBRARY_NAME;
        if (std::filesystem::exists(file)) return Library(file.string());
    }
    return Library(CURVEBANK_LIBRARY_NAME);
}

Model Library::find(const std::string &name) const
{
    uint16_t nIndep = 0, nDep = 0, nParams = 0;
    const ModelFunc function = get_func_(name.c_str(), &nIndep, &nDep, &nParams, nullptr);
    return {function, nIndep, nDep, nParams};
}

}  // namespace curvebank::host
