// A Curvebank library opened by file, as any foreign host opens it.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "curvebank/curvebank.h"
#include "platform/shared_library.h"

namespace curvebank::fit {

/// A model as the library hands it out.
struct Model {
    ModelFunc function = nullptr;
    int nIndep = 0, nDep = 0, nParams = 0;  ///< the counts of the catalogue
};

struct ExportedModel {
    std::string name;  ///< the export name
    int ordinal;
    std::string catalogue_name;  ///< empty where the catalogue has no row for it
};

/// The export list that this program was built with.
const std::vector<ExportedModel> &exported_models();

class Library {
public:
    /// Opens the library in that file; throws Error when there is none or it is no Curvebank library.
    explicit Library(const std::string &file);

    /// The model of that catalogue name, ignoring case; its function is null when the library has none.
    Model find(std::string_view name) const;

    /// A model that is reached by its export name alone and has no counts in the catalogue.
    ModelFunc exported(std::string_view name) const
    {
        return library_.function<ModelFunc>(std::string(name).c_str());
    }

    /// The command that lists and checks models on a host's worksheet, or null.
    decltype(&FuncTest) diagnostic_command() const { return library_.function<decltype(&FuncTest)>("FuncTest"); }

private:
    using GetFunc = ModelFunc (*)(const char *, uint16_t *, uint16_t *, uint16_t *, uint16_t *);

    platform::SharedLibrary library_;
    GetFunc get_func_;
};

}  // namespace curvebank::fit
