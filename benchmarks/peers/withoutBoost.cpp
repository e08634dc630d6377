#include "CheckPeer.h"

std::unique_ptr<CheckPeer> makeBoostChecker() { return nullptr; }
