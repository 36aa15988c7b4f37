// Stand-in effect for the host adapter: passes the scene clip straight
// through, with only a resolution list, until the real effect is bound here.
#include <cstring>

#include "host/effect_binding.h"
#include "spark/spark.h"

namespace {

class PassThrough : public PluginQv {
public:
    void ProcessFrame() override {
        ImageQv *scene = sources[0].image;
        ImageQv *output = result.image;
        if (!scene || !output || scene->width != output->width || scene->height != output->height)
            return;
        if (output->width > 0 && output->height > 0)
            std::memcpy(output->pixels, scene->pixels,
                        size_t(output->width) * size_t(output->height) * sizeof(PixelQv));
    }

    SourceQv sources[4];
    ResultQv result;
};

PassThrough instance;

}  // namespace

// The resolution list of the first page, so a host can pick the proxy. Weak:
// the full control table defines the same structure and takes its place.
extern "C" {
SPARK_EXPORT __attribute__((weak)) SparkPupStruct SparkPup33 = {
    0, 9, nullptr, {"FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32"}};
}

PluginQv &effect_instance() { return instance; }
SourceQv &effect_source(int index) { return instance.sources[index]; }
ResultQv &effect_result() { return instance.result; }
int resolution_list_value() { return SparkPup33.Value; }
double blend_control_value() { return 0.0; }
void blend_with_scene(ImageQv &, ImageQv &, double) {}
void refresh_cached_control_values() {}
void bind_framework_controls() {}
void rename_channel_editor_entries() {}
