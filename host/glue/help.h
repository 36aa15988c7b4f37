// The "Help" button: opens the effect's HTML page in an external browser.
#pragma once

#include <string>

#include "spark/spark.h"

// What display_help_topic would run for a topic, read from the environment
// (DIR_QV, QV_HELP_BROWSER) at the time of the call.
struct HelpLaunch {
    std::string address;  // file:<install>/dl/help/<topic without extension>.htm
    std::string command;  // <browser> -geometry +50+50 <address> &
};
HelpLaunch help_launch_for(const char *topic);

// Starts the browser on the topic's page in the background. Returns 0 when
// the shell was started, 1 when it could not be; the browser's own success
// is not checked.
int display_help_topic(const char *topic);

// Control-table callback of every page's "Help" button.
unsigned long *HelpCB(int reason, SparkInfoStruct info);
