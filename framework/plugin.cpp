// PluginQv, SourceQv and ResultQv: construction and random frame access.
#include "framework/plugin.h"

#include <cstdio>
#include <cstring>

#include "framework/pause.h"
#include "host/conversion.h"
#include "host/globals.h"
#include "spark/spark.h"

SourceQv::SourceQv()
    : random_access(0), temp_buffer(nullptr), image(nullptr), one(1), clip(0), deep(0), time(0.0) {
    std::memset(adapter_words, 0, sizeof(adapter_words));
}

void SourceQv::GetValue(double frame, ImageQv *&target) {
    const int width = DLwidth;
    const int height = DLheight;
    const int scale = DLscalesr;
    const float aspect = target ? float(target->scale_x) : 1.0f;
    if (!random_access || !temp_buffer) {
        static const char kNoTempBuffer[] =
            "Random Frame Access requested via GetValue(), but no temp buf allocated. "
            "(DLRandom in .plugin?)\n";
        sparkMessage(kNoTempBuffer);
        PauseForUser(2);
        std::fprintf(stderr, "SPARK_MESSAGE::\t%s\n", kNoTempBuffer);
        return;
    }
    sparkGetFrame(clip, int(frame + 0.5), temp_buffer->Buffer);
    if (deep)
        target = ConvertFromDLImage12(temp_buffer->Buffer, width, height, aspect, scale, target, 1);
    else
        target = ConvertFromDLImage8(temp_buffer->Buffer, width, height, aspect, scale, target, 1);
}

ResultQv::ResultQv() : image(nullptr) { std::memset(words, 0, sizeof(words)); }

PluginQv::PluginQv() = default;
PluginQv::~PluginQv() = default;
