#pragma once

#include <FloatMtx.h>

#include <string>

/// The pixels of a portable greymap, as text (P2) or binary (P5), with values up to 65535. The file's last row becomes row 0.
KELMAR_NORVIK2D::FloatMtx readGreyMap(const std::string& path);
