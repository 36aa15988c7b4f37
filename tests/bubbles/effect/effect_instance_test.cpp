// The effect instance: its controls and their bindings, and the request
// callbacks.
#include <set>

#include "../effect_rig.h"

namespace {

using EffectInstance = BoundEffectTest;

}  // namespace

TEST_F(EffectInstance, SixtyTwoControlsAllBoundButTheFourthButtonOfEachGroup) {
    std::set<ControlQv *> distinct;
    int unbound = 0;
    for (ControlQv *control : effect->info.controls()) {
        ASSERT_NE(control, nullptr);
        distinct.insert(control);
        unbound += !control->bound();
    }
    EXPECT_EQ(distinct.size(), 62u);
    EXPECT_EQ(unbound, 3);
    const BubblesInfo &info = effect->info;
    for (const ButtonControlQv *group : {info.restart, info.restartPreRoll, info.doPreRoll})
        EXPECT_FALSE(group[3].bound());
}

TEST_F(EffectInstance, RestartPreRollRaisesBothLevelRequests) {
    Bubbles &e = *effect;
    e.RestartPreRollCB(e.info.restartPreRoll[2], 0);
    e.RestartPreRollCB(e.info.restartPreRoll[0], 0);
    EXPECT_EQ(e.engine.restartPending, 1);
    EXPECT_EQ(e.engine.preRollPending, 1);
}
