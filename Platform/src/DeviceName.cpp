#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>
#include <Platform/DeviceName.h>

#include <array>
#include <fstream>
#include <unistd.h>

#include <climits>

namespace parvela {

namespace {

constexpr std::size_t longestName = 64;
constexpr std::streamsize longestFile = 64 * 1024;

std::string presentable(std::string_view text) {
    std::string name = toUtf8(toUtf16(text));
    for (char& c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    }
    return std::string(firstCharacters(trimmed(name), longestName));
}

std::string prettyHostName(const std::filesystem::path& machineInfo) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(machineInfo, error)) return {};
    std::ifstream file(machineInfo);
    std::string content(static_cast<std::size_t>(longestFile), '\0');
    file.read(content.data(), longestFile);
    content.resize(static_cast<std::size_t>(file.gcount()));

    constexpr std::string_view key = "PRETTY_HOSTNAME=";
    for (std::size_t start = 0; start < content.size();) {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        const std::string line = content.substr(start, end - start);
        start = end + 1;
        if (!line.starts_with(key)) continue;
        // The value is quoted as a shell would.
        const CharPtr value(g_shell_unquote(line.c_str() + key.size(), nullptr));
        return value ? presentable(value.get()) : std::string();
    }
    return {};
}

}  // namespace

std::string deviceName() {
    std::array<char, HOST_NAME_MAX + 1> host{};
    if (gethostname(host.data(), host.size() - 1) != 0) host.front() = '\0';
    return deviceName("/etc/machine-info", host.data());
}

std::string deviceName(const std::filesystem::path& machineInfo, const std::string& hostName) {
    if (std::string name = prettyHostName(machineInfo); !name.empty()) return name;
    const std::string name = presentable(hostName);
    return name.empty() || name == "localhost" ? "Mac" : name;
}

}  // namespace parvela
