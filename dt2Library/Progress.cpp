#include "Progress.h"

#include <algorithm>

#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

namespace {

void unlink(std::vector<Progress*>& links, const Progress* pProgress) {
    links.erase(std::remove(links.begin(), links.end(), pProgress), links.end());
}

}  // namespace

// Here, so that the type information of MsgBase has one home for all programs that derive from it.
MsgBase::~MsgBase() = default;

Progress::~Progress() {
    for (Progress* pChild : children) unlink(pChild->parents, this);
    for (Progress* pParent : parents) unlink(pParent->children, this);
}

void Progress::subscribe(MsgType type, MsgBase* pMsg) {
    subscribers.emplace(type, pMsg);
    ++numSubscribers;
}

void Progress::unsubscribe(MsgType type, MsgBase* pMsg) {
    const auto isWanted = [&](const auto& entry) { return entry.first == type && entry.second == pMsg; };
    numSubscribers -= std::erase_if(subscribers, isWanted);
}

void Progress::addChild(Progress* pChild) {
    // Both know each other, or neither: without memory for the second entry there must be no first one.
    pChild->parents.reserve(pChild->parents.size() + 1);
    children.push_back(pChild);
    pChild->parents.push_back(this);
}

void Progress::start(const std::string& name_, std::uint64_t total_) {
    if (bMuted || numSubscribers == 0) return;
    name = name_;
    total = total_;
    count = 0;
    bBegun = true;
    bFinished = false;
    // About a hundred calls, however long the operation is.
    step = total < 100 ? 1 : total / 100;
}

void Progress::finish() {
    if (!bBegun || bMuted) return;
    bBegun = false;
    count = total;
    if (!bFinished) broadcast(MSGTYPE_PROGRESS, name, 1.0);
    // To a parent the work of an operation that has ended counts in full.
    bFinished = true;
    name.clear();
    total = 0;
    count = 0;
}

// Not divided by the number of parts: a parent reaches 1.0 with its first finished child, and stays there.
double Progress::getPercDone() const {
    RoundToNearest nearest;
    double value = total == 0 ? 0.0 : static_cast<double>(count) / static_cast<double>(total);
    for (const Progress* pChild : children) value += pChild->bFinished ? 1.0 : pChild->getPercDone();
    return value;
}

void Progress::broadcast(MsgType type, const std::string& text, double value) {
    // A subscriber may subscribe or unsubscribe, itself or others, from within its call.
    std::vector<MsgBase*> called;
    const auto [first, last] = subscribers.equal_range(type);
    for (auto it = first; it != last; ++it) called.push_back(it->second);
    for (MsgBase* pMsg : called)
        if (isSubscribed(type, pMsg)) pMsg->update(type, text, value);
}

bool Progress::isSubscribed(MsgType type, const MsgBase* pMsg) const {
    const auto [first, last] = subscribers.equal_range(type);
    return std::any_of(first, last, [&](const auto& entry) { return entry.second == pMsg; });
}

/// Upward first, so that a parent sees this part of its work in progress; then to the own subscribers.
void Progress::refresh() {
    for (Progress* pParent : parents)
        if (pParent->isTracked() && !pParent->bFinished && pParent->count % pParent->step == 0)
            pParent->refresh();

    double value = getPercDone();
    if (value >= 1.0) {
        value = 1.0;
        bFinished = true;
    }
    broadcast(MSGTYPE_PROGRESS, name, value);
}

}  // namespace KELMAR_NORVIK2D
