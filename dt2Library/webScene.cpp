#include "webScene.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <stdexcept>

#include "Dt2.h"
#include "diagnostics.h"
#include "standardOutput.h"
#include "viewerFiles.h"

namespace KELMAR_NORVIK2D {

namespace {

bool makeFolder(const std::string& path) {
    constexpr mode_t mode = 0755;
    if (mkdir(path.c_str(), mode) == 0) return true;
    return errno == EEXIST && doesDirExist(path);
}

}  // namespace

bool createDirectory(const char* name) {
    if (name == nullptr) throw std::logic_error("createDirectory: the name is null");
    return makePath(name);
}

bool makePath(const std::string& path) {
    if (makeFolder(path)) return true;
    if (errno != ENOENT) return false;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || !makePath(path.substr(0, slash))) return false;
    // With a slash at its end the path is its own parent, and is there by now.
    return makeFolder(path);
}

bool doesDirExist(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void fileReplicate(const char* name, const char* dirname) {
    const auto file = std::find_if(viewerFiles.begin(), viewerFiles.end(),
                                   [&](const ViewerFile& candidate) { return candidate.name == name; });
    if (file == viewerFiles.end()) {
        print(compose("fileReplicate: unknown file ", name, "\n"));
        return;
    }
    const std::string path = std::string(dirname) + "/" + name;
    std::FILE* const pFile = std::fopen(path.c_str(), "wt");
    bool bWritten = false;
    if (pFile != nullptr) {
        bWritten = std::fwrite(file->text.data(), 1, file->text.size(), pFile) == file->text.size();
        bWritten = std::fclose(pFile) == 0 && bWritten;
    }
    if (!bWritten) warning("fileReplicate()", "Can't write " + path);
}

void Dt2::writeWebScene(const char* dirname, const Zone2* pZone) const {
    if (!createDirectory(dirname)) {
        warning("Dt2::writeWebScene()", std::string("Can't create directory ") + dirname);
        return;
    }
    print(compose("writeWebScene: Creating ", dirname, "\n"));
    for (const char* name : {"index.html", "jsc3d.js", "jsc3d.ctm.js", "jsc3d.touch.js"})
        fileReplicate(name, dirname);
    writeObj(std::string(dirname) + "/3d.obj", pZone);
}

}  // namespace KELMAR_NORVIK2D
