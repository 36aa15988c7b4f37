// Colour controls: packing both ways, sliders, hiding and freezing.
#include <vector>

#include "control_records.h"
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

namespace {

struct ColourWithSliders {
    SparkColorStruct word{0, nullptr};
    SparkColorStruct second{0, nullptr};
    SparkFloatStruct red = float_record(10.0f, 5.0f, 95.0f), green = float_record(20.0f, 5.0f, 95.0f),
                     blue = float_record(30.0f, 5.0f, 95.0f);
    AuxQv aux;
    ColourControlQv control;

    explicit ColourWithSliders(int index) {
        aux.sliders[0] = &red;
        aux.sliders[1] = &green;
        aux.sliders[2] = &blue;
        aux.second_colour = &second;
        control.Bind(index, &word, &aux);
    }
};

}  // namespace

using ColourControls = HostLogTest;

TEST_F(ColourControls, SyncFillsLowBitsGetValueDoesNot) {
    SparkColorStruct host{0x000080FFu, nullptr};  // red 255, green 128, blue 0
    ColourControlQv colour;
    colour.Bind(401, &host, nullptr);
    colour.Sync();
    EXPECT_THAT(colour.cached, ElementsAre(32767, 16448, 0, 32767));
    int r, g, b, a;
    colour.GetValue(-1.0, r, g, b, a);
    EXPECT_THAT((std::vector<int>{r, g, b, a}), ElementsAre(32640, 16384, 0, 32767));
}

TEST_F(ColourControls, SetValuePacksWithOpaqueTopByteAndWritesSlidersInPercentOfTheByte) {
    ColourWithSliders with(403);
    with.control.SetValue(-1.0, 32767, 16448, 127, 0);  // alpha is ignored
    EXPECT_EQ(with.word.Value, 0xFF0080FFu);
    EXPECT_EQ(with.green.Value, static_cast<float>(128 / 2.55));
    EXPECT_EQ(with.blue.Value, 0.0f);
    EXPECT_THAT(updates(), ElementsAre(403, 404, 405, 406));
}

TEST_F(ColourControls, FreezingPinsSlidersThawingOpensThemToHundred) {
    ColourWithSliders colour(430);
    colour.word.Value = 0xFF112233u;
    colour.control.Disable(true);
    EXPECT_EQ(colour.green.Max, 20.0f);
    EXPECT_EQ(colour.second.Value, 0xFF112233u);
    colour.word.Value = 0xFF445566u;
    colour.control.Disable(false);
    EXPECT_EQ(colour.red.Min, 0.0f);  // not the 5..95 the slider had before
    EXPECT_EQ(colour.red.Max, 100.0f);
    EXPECT_EQ(colour.second.Value, 0xFF445566u);
    EXPECT_THAT(updates(), ElementsAre(431, 432, 433, 430, 431, 432, 433, 430));
}
