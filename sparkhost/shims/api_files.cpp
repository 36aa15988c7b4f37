// Host functions: the working directory and the file browser.
#include <unistd.h>

#include <cstring>

#include "spark/spark.h"
#include "sparkhost/core/host.h"

using sparkhost::Host;

extern "C" {

void sparkWorkingDir(char *buffer) {
    if (!buffer) return;
    if (Host *host = Host::current()) {
        std::strncpy(buffer, host->working_dir().c_str(), SPARK_SETUP_PATH_MAX - 1);
        buffer[SPARK_SETUP_PATH_MAX - 1] = '\0';
    } else if (!getcwd(buffer, SPARK_SETUP_PATH_MAX)) {
        std::strcpy(buffer, ".");
    }
}

void sparkFileBrowserDisplay(const char *directory, const char *extension,
                             SparkFileBrowserCallback callback) {
    if (Host *host = Host::current()) host->browse(directory, extension, callback);
}

}  // extern "C"
