#pragma once

#include <string>

namespace KELMAR_NORVIK2D {

/// Makes a folder, and those above it that are missing; false if that isn't possible. Throws std::logic_error for null.
bool createDirectory(const char* name);

/// The same. A folder that is there already is a success, anything else of that name is not.
bool makePath(const std::string& path);

bool doesDirExist(const std::string& path);

/// Writes one of the viewer's files into a folder, over one that is there.
void fileReplicate(const char* name, const char* dirname);

}  // namespace KELMAR_NORVIK2D
