// Files and text helpers of the run-time the tool relies on.
#include <fnmatch.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "ui/UserInterface.h"

namespace fs = std::filesystem;

int GetProjectDir(char directory[1024]) {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    const std::string dir = ec ? std::string(".") : exe.parent_path().string();
    if (dir.size() > 1023) {
        directory[0] = '\0';
        return -1;
    }
    std::strcpy(directory, dir.c_str());
    return 0;
}

int FileExists(const char *path, int *fileSize) {
    std::error_code ec;
    const auto status = fs::status(path ? path : "", ec);
    if (ec || !fs::exists(status)) {
        if (fileSize) *fileSize = -1;
        return 0;
    }
    if (fileSize) {
        if (fs::is_regular_file(status)) {
            const auto size = fs::file_size(path, ec);
            *fileSize = ec ? -1 : static_cast<int>(std::min<std::uintmax_t>(size, 0x7FFFFFFF));
        } else {
            *fileSize = -1;
        }
    }
    return 1;
}

namespace {
// GetFirstFile / GetNextFile walk one folder's listing, taken whole at the first call.
struct Listing {
    std::mutex mutex;
    std::vector<std::string> names;
    size_t next = 0;
};
Listing &listing() {
    static Listing l;
    return l;
}
}  // namespace

int GetFirstFile(const char *searchPath, int normal, int, int, int, int, int directory, char fileName[1024]) {
    auto &l = listing();
    std::lock_guard lock(l.mutex);
    l.names.clear();
    l.next = 0;
    const fs::path search(searchPath ? searchPath : "");
    const fs::path folder = search.has_parent_path() ? search.parent_path() : fs::path(".");
    const std::string pattern = search.filename().string();
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) return -1;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const bool isDir = it->is_directory(ec);
        if ((isDir && !directory) || (!isDir && !normal)) continue;
        const std::string name = it->path().filename().string();
        if (fnmatch(pattern.c_str(), name.c_str(), 0) == 0 && name.size() < 1024) l.names.push_back(name);
    }
    std::sort(l.names.begin(), l.names.end());
    if (l.names.empty()) return -1;
    std::strcpy(fileName, l.names[l.next++].c_str());
    return 0;
}

int GetNextFile(char fileName[1024]) {
    auto &l = listing();
    std::lock_guard lock(l.mutex);
    if (l.next >= l.names.size()) return -1;
    std::strcpy(fileName, l.names[l.next++].c_str());
    return 0;
}

int FindPattern(const char *buffer, int startingIndex, int numberOfBytes, const char *pattern, int caseSensitive,
                int startFromRight) {
    if (!buffer || !pattern) return -1;
    const int length = static_cast<int>(std::strlen(buffer));
    if (startingIndex < 0 || startingIndex > length) return -1;
    const int end = numberOfBytes < 0 ? length : std::min(length, startingIndex + numberOfBytes);
    const int plen = static_cast<int>(std::strlen(pattern));
    if (plen == 0 || plen > end - startingIndex) return -1;
    auto matches = [&](int at) {
        return caseSensitive ? std::strncmp(buffer + at, pattern, plen) == 0
                             : strncasecmp(buffer + at, pattern, plen) == 0;
    };
    if (startFromRight) {
        for (int at = end - plen; at >= startingIndex; --at)
            if (matches(at)) return at;
    } else {
        for (int at = startingIndex; at + plen <= end; ++at)
            if (matches(at)) return at;
    }
    return -1;
}
