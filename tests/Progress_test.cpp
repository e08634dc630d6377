#include "Progress.h"

#include <gtest/gtest.h>

#include <functional>

using namespace KELMAR_NORVIK2D;

namespace {

struct Listener : MsgBase {
    std::vector<double> values;
    std::vector<std::string> names;
    std::function<void()> onUpdate = [] {};

    void update(MsgType, const std::string& name, double value) override {
        values.push_back(value);
        names.push_back(name);
        onUpdate();
    }
};

}  // namespace

TEST(Progress, OnlyARunningOperationWithListenersReports) {
    Progress progress;
    Listener listener;
    progress.start("", 10);
    EXPECT_FALSE(progress.isTracked());
    progress.subscribe(MSGTYPE_PROGRESS, &listener);
    progress.setMuted(true);
    progress.start("", 11);
    for (int i = 0; i < 11; ++i) progress.incProgress(1);
    progress.finish();
    EXPECT_TRUE(listener.values.empty());

    progress.setMuted(false);
    progress.start("", 1000);
    progress.incProgress(500);
    progress.finish();  // cut short, it still ends with 1.0, once
    progress.finish();
    EXPECT_EQ(listener.values, (std::vector<double>{0.5, 1.0}));
}

TEST(Progress, SubscribersAreCalledInOrderAndAsOftenAsAdded) {
    Progress progress;
    std::string calls;
    Listener a, b;
    a.onUpdate = [&] { calls += 'a'; };
    b.onUpdate = [&] {
        calls += 'b';
        if (calls.size() > 3) progress.unsubscribe(MSGTYPE_PROGRESS, &b);
    };
    for (Listener* pListener : {&b, &a, &b}) progress.subscribe(MSGTYPE_PROGRESS, pListener);
    for (int i = 0; i < 3; ++i) progress.broadcast(MSGTYPE_PROGRESS, "", 0.5);
    EXPECT_EQ(calls,
              "bab"
              "ba"
              "a");  // both entries of b go within its own call
}

TEST(Progress, AParentShowsTheWorkOfItsChildren) {
    Progress parent;
    Listener onParent, onChild;
    {
        Progress child;
        parent.subscribe(MSGTYPE_PROGRESS, &onParent);
        child.subscribe(MSGTYPE_PROGRESS, &onChild);
        parent.addChild(&child);
        parent.start("joint", 10);
        child.start("part", 4);
        child.incProgress(1);
        child.incProgress(3);
        EXPECT_EQ(onChild.values, (std::vector<double>{0.25, 1.0}));
        EXPECT_EQ(onParent.values, onChild.values);
        EXPECT_EQ(onParent.names.back(), "joint");
    }
    EXPECT_EQ(parent.getPercDone(), 0.0);  // the link is gone with the child
}
