// Banded multiprocessing over the host's processor fork.
#include <cstdint>

#include "framework/plugin.h"
#include "host/globals.h"
#include "spark/spark.h"

RowBand band_for_worker(long worker, long rows, long workers) {
    long band = rows / workers;
    RowBand result;
    result.first = worker * band;
    result.last = worker < workers - 1 ? result.first + band - 1 : rows - 1;
    return result;
}

namespace {

// A host that reports no processors still gets its work done, on one.
long processor_count() { return DLnumProc > 0 ? DLnumProc : 1; }

long worker_index() {
    unsigned int a = 0, b = 1;
    sparkMpInfo(&a, &b);
    unsigned int quotient = b ? a / b : 0;
    return long(double(quotient) + 0.2);  // the + 0.2 is kept as the framework has it
}

template <class Object>
struct MemberCall {
    void (Object::*member)(long, long);
};

template <class Object>
void process_func_generic(void *pair, void *object, void *rows, void *count) {
    auto *call = static_cast<MemberCall<Object> *>(pair);
    RowBand band = band_for_worker(worker_index(), long(intptr_t(rows)), long(intptr_t(count)));
    (static_cast<Object *>(object)->*(call->member))(band.first, band.last);
}

void process_func(void *pair, void *object, void *rows, void *count) {
    process_func_generic<PluginQv>(pair, object, rows, count);
}

void process_func_img(void *pair, void *object, void *rows, void *count) {
    process_func_generic<ImageQv>(pair, object, rows, count);
}

}  // namespace

int PluginQv::MultiProcess(void (PluginQv::*member)(long, long), long rows) {
    MemberCall<PluginQv> call{member};
    return sparkMpFork(process_func, 4, &call, this, reinterpret_cast<void *>(intptr_t(rows)),
                       reinterpret_cast<void *>(intptr_t(processor_count())));
}

int ImageQv::MultiProcess(void (ImageQv::*member)(long, long), long rows) {
    MemberCall<ImageQv> call{member};
    return sparkMpFork(process_func_img, 4, &call, this, reinterpret_cast<void *>(intptr_t(rows)),
                       reinterpret_cast<void *>(intptr_t(processor_count())));
}
