#include "Support/InstalledFiles.h"

#include <system_error>

namespace parvela {

std::filesystem::path programFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::filesystem::path webProcessFolder() {
    return (programFolder() / PARVELA_WEB_PROCESS_FOLDER).lexically_normal();
}

}  // namespace parvela
