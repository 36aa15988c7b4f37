// Plug-in base: random frame access and tracking data.
#include <gtest/gtest.h>

#include <vector>

#include "framework/plugin.h"
#include "host/adapter/conversion.h"
#include "spark/spark.h"
#include "pixel_expect.h"

namespace {

class FrameAccess : public ::testing::Test {
protected:
    void SetUp() override {
        frame_context = FrameContextQv{4, 3, 1, 2, ConvertFetchedFrame};
        host_pixels.assign(4 * 3 * 3, 0);
        record.Buffer = host_pixels.data();
        source.clip = 1;
    }
    void TearDown() override { frame_context = FrameContextQv{}; }
    std::vector<uint8_t> host_pixels;  // the host leaves fetched frames here
    SparkMemBufStruct record{};
    SourceQv source;
};

}  // namespace

TEST_F(FrameAccess, WithoutTempBufferImageIsLeftAlone) {
    ImageQv image(4, 3, 1.0f, nullptr, nullptr);
    image.Fill(11, 22, 33, 44);
    ImageQv *pointer = &image;
    testing::internal::CaptureStderr();
    source.GetValue(5.0, pointer);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(pointer, &image);
    EXPECT_EQ(image.rows[2][3].red, 11);
    EXPECT_NE(err.find("SPARK_MESSAGE::\tRandom Frame Access requested via GetValue(), but no temp "
                       "buf allocated. (DLRandom in .plugin?)\n\n"),
              std::string::npos);
}

TEST_F(FrameAccess, FetchedFrameIsConvertedIntoTheGivenImageKeepingItsAspect) {
    source.random_access = 1;
    source.temp_buffer = &record;
    host_pixels[(2 * 4 + 3) * 3 + 0] = 255;
    ImageQv image(4, 3, 1.0f, nullptr, nullptr);
    image.scale_x = 1.25;
    ImageQv *pointer = &image;
    source.GetValue(5.0, pointer);
    EXPECT_EQ(image.rows[2][3], (PixelQv{0x7FFF, 0, 0, 0x7FFF}));
    EXPECT_EQ(image.scale_x, 1.25);  // the image's own aspect is handed back in
}

TEST(TrackDecode, HighBitOfGreenFallsOut) {
    ImageQv image(3, 1, 1.0f, nullptr, nullptr);
    image.rows[0][0] = PixelQv{0x0080, 0x0000, 0x0000, 0x0000};
    image.rows[0][1] = PixelQv{0x0000, 0x8000, 0x0000, 0x0000};
    image.rows[0][2] = PixelQv{0x7FFF, 0x7FFF, 0x0100, 0x0000};
    float vectors[6] = {};
    PluginQv plugin;
    plugin.track_image = &image;
    plugin.track_buffer = vectors;
    plugin.mp_ImgToTV(0, 0);
    // 0xFF | 0xFFFE = 0xFFFF gives -1/256 for the last pixel's x.
    const float expected[6] = {1.0f / 256, 0.0f, 0.0f, 0.0f, -1.0f / 256, 2.0f / 256};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(vectors[i], expected[i]) << i;
}
