#pragma once

#include <vector>

#include "constraintRows.h"

std::vector<NamedRow> boxRows();
