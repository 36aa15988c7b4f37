// PluginQv, SourceQv and ResultQv: construction and random frame access.
#include "framework/plugin.h"

#include <cstdio>
#include <cstring>

#include "framework/pause.h"
#include "spark/spark.h"

FrameContextQv frame_context;

SourceQv::SourceQv()
    : random_access(0), temp_buffer(nullptr), image(nullptr), one(1), clip(0), deep(0), time(0.0) {
    std::memset(adapter_words, 0, sizeof(adapter_words));
}

void SourceQv::GetValue(double frame, ImageQv *&target) {
    const float aspect = target ? float(target->scale_x) : 1.0f;
    if (!random_access || !temp_buffer || !frame_context.convert) {
        static const char kNoTempBuffer[] =
            "Random Frame Access requested via GetValue(), but no temp buf allocated. "
            "(DLRandom in .plugin?)\n";
        sparkMessage(kNoTempBuffer);
        PauseForUser(2);
        std::fprintf(stderr, "SPARK_MESSAGE::\t%s\n", kNoTempBuffer);
        return;
    }
    sparkGetFrame(clip, int(frame + 0.5), temp_buffer->Buffer);
    target = frame_context.convert(temp_buffer->Buffer, deep != 0, frame_context.width, frame_context.height,
                                   aspect, frame_context.scale_divisor, target);
}

ResultQv::ResultQv() : image(nullptr) { std::memset(words, 0, sizeof(words)); }

PluginQv::PluginQv() = default;
PluginQv::~PluginQv() = default;
