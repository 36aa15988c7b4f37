// Amplitude control file reader and the two host callbacks around it.
#include "host/glue/amplitude_import.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>

#include "framework/pause.h"

AmplitudeImportHost amplitude_import_host = {sparkSetCurveKey, sparkMessage, PauseForUser,
                                             sparkWorkingDir, sparkFileBrowserDisplay};

AmplitudeReadResult read_amplitude_keys(FILE *file, const AmplitudeKeySink &on_key) {
    AmplitudeReadResult result;
    if (!file) return result;
    if (std::fscanf(file, "Channel Amplitude %d:\n\tSize %d\n", &result.channel, &result.size) != 2)
        return result;
    result.header_ok = true;
    for (int i = 0; i < result.size; ++i) {
        int key = 0, frame = 0;
        float value = 0.0f;
        if (std::fscanf(file, "\tKey %d\n\t\tFrame %d\n\t\tValue %f\n\t\tEnd\n", &key, &frame, &value) != 3)
            break;
        if (!std::isfinite(value)) break;  // a curve key must be a number
        on_key(key, frame, value);
        ++result.keys_read;
    }
    return result;
}

unsigned long *import_aiff_CB(int, SparkInfoStruct) {
    char directory[SPARK_SETUP_PATH_MAX] = {};
    amplitude_import_host.working_dir(directory);
    directory[SPARK_SETUP_PATH_MAX - 1] = '\0';
    amplitude_import_host.file_browser(directory, "", aiff_file_CB);
    return nullptr;
}

namespace {

// Only a regular file can be a control file: a FIFO would block the open
// (and the plug-in with it) and a device would be read without end. The
// open does not wait and the check is made on what was opened.
FILE *open_control_file(const char *path) {
    if (!path) return nullptr;
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat info {};
    FILE *file = fstat(fd, &info) == 0 && S_ISREG(info.st_mode) ? fdopen(fd, "r") : nullptr;
    if (!file) close(fd);
    return file;
}

}  // namespace

void aiff_file_CB(char *path) {
    FILE *file = open_control_file(path);
    if (!file) {
        amplitude_import_host.message("Unable to open file");
        amplitude_import_host.pause(2);
        return;
    }
    // The key number places the key; the file's Frame field is ignored.
    AmplitudeReadResult result = read_amplitude_keys(file, [](int key, int, float value) {
        amplitude_import_host.set_curve_key(kAmplitudeCurveKind, kAmplitudeCurveControl, float(key),
                                            value);
    });
    if (!result.header_ok) {
        amplitude_import_host.message("Not a valid control file");
        amplitude_import_host.pause(2);
    }
    std::fclose(file);
}
