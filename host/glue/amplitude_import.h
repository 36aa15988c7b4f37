// "Import Amplitude File": reads a text file of animation keys into the
// host's amplitude curve.
#pragma once

#include <cstdio>
#include <functional>

#include "spark/spark.h"

// What the reader found. header_ok is false when the header did not give
// both numbers; keys_read counts the keys handed on before the first
// malformed one (or all `size` of them).
struct AmplitudeReadResult {
    bool header_ok = false;
    int channel = 0;
    int size = 0;
    int keys_read = 0;
};

using AmplitudeKeySink = std::function<void(int key, int frame, float value)>;

// Reads the header, then up to `size` keys, calling on_key for each
// complete one in file order. Reading stops at the first key that does not
// give all three numbers (or gives a value that is not finite).
AmplitudeReadResult read_amplitude_keys(FILE *file, const AmplitudeKeySink &on_key);

// The host functions the import reaches, replaceable so that the import can
// be exercised without a host. Defaults: sparkSetCurveKey, sparkMessage,
// PauseForUser, sparkWorkingDir, sparkFileBrowserDisplay.
struct AmplitudeImportHost {
    int (*set_curve_key)(int kind, int control, float frame, float value);
    void (*message)(const char *text);
    void (*pause)(unsigned int seconds);
    void (*working_dir)(char *buffer);
    void (*file_browser)(const char *directory, const char *extension,
                         SparkFileBrowserCallback callback);
};
extern AmplitudeImportHost amplitude_import_host;

// The curve the keys go to: first argument 0, target control 93.
constexpr int kAmplitudeCurveKind = 0;
constexpr int kAmplitudeCurveControl = 93;

// Control-table callback of "Import Amplitude File": opens the host's file
// browser in its working directory with aiff_file_CB as the callback.
unsigned long *import_aiff_CB(int reason, SparkInfoStruct info);

// Imports the chosen file; failures are shown through the host's message
// line followed by a 2-second pause.
void aiff_file_CB(char *path);
