// PluginQv: base class of an effect, its input sources and output result,
// and the banded multiprocessing that spreads row work over the processors.
#pragma once

#include <cstdint>
#include <cstdio>

#include "framework/image.h"

struct SparkMemBufStruct;

// What the framework needs to know about the frame in hand. The host adapter
// fills it before each frame, so the framework never reaches into the adapter.
struct FrameContextQv {
    int32_t width = 0;          // full-resolution frame
    int32_t height = 0;
    int32_t scale_divisor = 0;  // proxy divisor, 1 at full resolution
    int32_t processors = 0;     // reported by the host; fewer than one still means one
    // Turns a host frame buffer into an image, as the adapter converts its inputs.
    ImageQv *(*convert)(const void *buffer, bool deep, long width, long height, double aspect,
                        int divisor, ImageQv *image) = nullptr;
};
extern FrameContextQv frame_context;

// One input clip of the host.
class SourceQv {
public:
    SourceQv();
    // Replaces image with this input's frame at the given time (random access).
    void GetValue(double frame, ImageQv *&image);

    int32_t random_access;          // non-zero when a host temp buffer was set up
    SparkMemBufStruct *temp_buffer; // receives frames fetched by GetValue
    int32_t adapter_words[14];      // for the host adapter's use
    ImageQv *image;                 // converted current frame, null when none
    int32_t one;                    // 1 at construction
    int32_t clip;                   // host clip number for sparkGetFrame
    uint8_t deep;                   // host buffers are 12-bit
    double time;                    // reset to 0.0 by the frame cycle
};

// The output clip.
class ResultQv {
public:
    ResultQv();
    int32_t words[16];
    ImageQv *image;  // frame being produced
};

class PluginQv {
public:
    PluginQv();
    virtual ~PluginQv();
    virtual void ProcessFrame() {}
    virtual void ProcessFrameOGL(int, int, double, double, double, double) {}
    virtual void SyncControls() {}
    virtual void Load(FILE *, long) {}
    virtual void Save(FILE *) {}
    virtual void LoadPrivate() {}
    virtual void SavePrivate() {}
    virtual void Reset(int) {}
    virtual void FrameChange(double) {}

    int AbortRender() const { return 0; }
    void LoadPrivateData(void *, long, const char *) {}
    void SavePrivateData(void *, long *, const char *) {}

    // Runs member(first, last) over rows 0..rows-1 in bands over the host's
    // processors (frame_context.processors); returns when all are done.
    int MultiProcess(void (PluginQv::*member)(long, long), long rows);
    template <class Effect>
    int MultiProcess(void (Effect::*member)(long, long), long rows) {
        return MultiProcess(static_cast<void (PluginQv::*)(long, long)>(member), rows);
    }
    void execute_library_mp_func(long first, long last);

    float *GetTrackData(SourceQv *source, double frame);
    void mp_ImgToTV(long first, long last);

    // Frame state the host adapter fills before ProcessFrame.
    double current_frame = 0.0;   // first frame counter of the info record
    double frame_count = 0.0;     // second frame counter
    uint8_t skip_matte_copy = 0;  // when set, ProcessFrame leaves the output's matte alone
    float pen_pressure = 0.0f;    // set by viewer interaction, reset each frame

    // Framework fields, in order.
    void (*library_mp_func)(void *, int, int) = nullptr;
    void *library_mp_arg = nullptr;
    int32_t mode = 15;
    int32_t mode_words[10] = {};
    float *track_buffer = nullptr;
    ImageQv *track_image = nullptr;
};

int lib_mp_exec(void *effect, void (*func)(void *, int, int), int rows, void *arg);
int lib_abort_render(void *effect);

// The band a worker handles, inclusive; an empty band has first > last.
struct RowBand {
    long first;
    long last;
};
RowBand band_for_worker(long worker, long rows, long workers);
// Inside a worker started by the host's fork: this worker's index from 0.
long current_worker_index();
