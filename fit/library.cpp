#include "fit/library.h"

#include "curvebank/exports.h"
#include "platform/error.h"

namespace curvebank::fit {
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

Model Library::find(std::string_view name) const
{
    uint16_t nIndep = 0, nDep = 0, nParams = 0;
    const ModelFunc function = get_func_(std::string(name).c_str(), &nIndep, &nDep, &nParams, nullptr);
    return {function, nIndep, nDep, nParams};
}

}  // namespace curvebank::fit
