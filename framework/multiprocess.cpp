// Banded multiprocessing over the host's processor fork.
#include <atomic>
#include <cstdint>

#include "framework/plugin.h"
#include "spark/spark.h"

RowBand band_for_worker(long worker, long rows, long workers) {
    if (workers < 1) workers = 1;  // no processors reported still means one
    const long band = rows / workers;
    RowBand result;
    result.first = worker * band;
    // The last worker (or any beyond it) takes the remainder.
    result.last = worker < workers - 1 ? result.first + band - 1 : rows - 1;
    return result;
}

long current_worker_index() {
    unsigned int a = 0, b = 1;
    sparkMpInfo(&a, &b);
    const unsigned int quotient = b ? a / b : 0;
    return long(double(quotient) + 0.2);  // the + 0.2 is kept as the framework always had it
}

namespace {

// A host that reports no processors still gets its work done, on one.
long processor_count() { return frame_context.processors > 0 ? frame_context.processors : 1; }

// Bubbles crowd into some rows and leave others empty, so equal bands, one
// a processor, leave processors idle. Several smaller bands a processor,
// taken by whichever processor is free, even the work out. One processor
// keeps the whole frame as one band.
constexpr long kBandsPerProcessor = 6;

long band_count(long rows, long processors) {
    if (processors <= 1) return 1;
    const long bands = processors * kBandsPerProcessor;
    return rows < bands ? (rows > 1 ? rows : 1) : bands;
}

template <class Object>
struct BandedCall {
    void (Object::*member)(long, long);
    long bands;
    std::atomic<long> next{0};
};

template <class Object>
void process_func_generic(void *call_pointer, void *object, void *rows, void *) {
    auto *call = static_cast<BandedCall<Object> *>(call_pointer);
    const long row_count = long(intptr_t(rows));
    for (long index = call->next++; index < call->bands; index = call->next++) {
        const RowBand band = band_for_worker(index, row_count, call->bands);
        (static_cast<Object *>(object)->*(call->member))(band.first, band.last);
    }
}

void process_func(void *call, void *object, void *rows, void *count) {
    process_func_generic<PluginQv>(call, object, rows, count);
}

void process_func_img(void *call, void *object, void *rows, void *count) {
    process_func_generic<ImageQv>(call, object, rows, count);
}

}  // namespace

int PluginQv::MultiProcess(void (PluginQv::*member)(long, long), long rows) {
    BandedCall<PluginQv> call;
    call.member = member;
    call.bands = band_count(rows, processor_count());
    return sparkMpFork(process_func, 4, &call, this, reinterpret_cast<void *>(intptr_t(rows)),
                       reinterpret_cast<void *>(intptr_t(processor_count())));
}

int ImageQv::MultiProcess(void (ImageQv::*member)(long, long), long rows) {
    BandedCall<ImageQv> call;
    call.member = member;
    call.bands = band_count(rows, processor_count());
    return sparkMpFork(process_func_img, 4, &call, this, reinterpret_cast<void *>(intptr_t(rows)),
                       reinterpret_cast<void *>(intptr_t(processor_count())));
}

void PluginQv::execute_library_mp_func(long first, long last) {
    library_mp_func(library_mp_arg, int(first), int(last));
}

// Function and argument live in the effect, so two of these on one effect
// must not overlap.
int lib_mp_exec(void *effect, void (*func)(void *, int, int), int rows, void *arg) {
    auto *plugin = static_cast<PluginQv *>(effect);
    plugin->library_mp_func = func;
    plugin->library_mp_arg = arg;
    return plugin->MultiProcess(&PluginQv::execute_library_mp_func, rows);
}

int lib_abort_render(void *effect) { return static_cast<PluginQv *>(effect)->AbortRender(); }
