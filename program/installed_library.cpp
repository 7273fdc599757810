#include "program/installed_library.h"

#include <cstdlib>
#include <filesystem>

#include "platform/process.h"

namespace curvebank::program {

fit::Library installed_library()
{
    if (const char *file = std::getenv("CURVEBANK_LIBRARY")) return fit::Library(file);
    const auto folder_of_program = std::filesystem::path(platform::running_program()).parent_path();
    for (const auto &folder : {folder_of_program, folder_of_program / CURVEBANK_LIBRARY_FROM_PROGRAM}) {
        const auto file = folder / CURVEBANK_LIBRARY_NAME;
        if (std::filesystem::exists(file)) return fit::Library(file.string());
    }
    return fit::Library(CURVEBANK_LIBRARY_NAME);
}

}  // namespace curvebank::program
