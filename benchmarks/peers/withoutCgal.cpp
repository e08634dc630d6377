#include "ConstraintPeer.h"
#include "MeshPeer.h"
#include "Peer.h"

std::unique_ptr<Peer> makeCgal() { return nullptr; }
std::unique_ptr<Peer> makeCgalHierarchy() { return nullptr; }
std::unique_ptr<ConstraintPeer> makeCgalOfSegments() { return nullptr; }
std::unique_ptr<ConstraintPeer> makeCgalOfPoints() { return nullptr; }
std::unique_ptr<MeshPeer> makeCgalMesh() { return nullptr; }
