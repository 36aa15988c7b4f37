// Amplitude control file reader and the two host callbacks around it.
#include "host/amplitude_import.h"

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

void aiff_file_CB(char *path) {
    FILE *file = path ? std::fopen(path, "r") : nullptr;
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
