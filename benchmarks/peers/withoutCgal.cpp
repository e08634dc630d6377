#include "Peer.h"

std::unique_ptr<Peer> makeCgal() { return nullptr; }
std::unique_ptr<Peer> makeCgalHierarchy() { return nullptr; }
