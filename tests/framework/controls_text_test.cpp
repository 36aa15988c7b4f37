// Text and file-name controls.
#include <cstring>

#include "framework/controls.h"
#include "host_log_fixture.h"

using TextControls = HostLogTest;

TEST_F(TextControls, FileNameLosesEveryBlankInTheHostStringToo) {
    SparkPushStruct button{"Import Amplitude File", nullptr};
    SparkStringStruct name{};
    std::strcpy(name.Value, "  my sound\t file.aiff \n");
    AuxQv aux;
    aux.text = &name;
    FileControlQv file;
    file.Bind(114, &button, &aux);
    EXPECT_STREQ(file.GetValue(-1.0), "mysoundfile.aiff");
    EXPECT_STREQ(name.Value, "mysoundfile.aiff");
}
