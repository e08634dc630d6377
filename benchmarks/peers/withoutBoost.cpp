#include "BoxPeer.h"
#include "CheckPeer.h"

std::unique_ptr<CheckPeer> makeBoostChecker() { return nullptr; }
std::unique_ptr<BoxPeer> makeBoostBoxes() { return nullptr; }
