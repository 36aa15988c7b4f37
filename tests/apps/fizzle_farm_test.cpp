// fizzle-farm's side of a submission, against stand-ins for sbatch and
// scontrol on PATH: what it asks the manager for and what it reports. The
// real cluster is farm_slurm_test.sh's.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "render_run.h"

namespace fs = std::filesystem;

namespace {

class FizzleFarm : public RenderRun {
protected:
    void SetUp() override {
        RenderRun::SetUp();
        fs::create_directory(path("bin"));
        // sbatch answers with job ids 41, 42, ... and notes its arguments;
        // scontrol knows the array with chunk 1 running and the rest pending.
        script("sbatch", "n=$(( $(cat " + quoted(path("bin/count")) + " 2>/dev/null || echo 40) + 1 ))\n"
                         "echo $n > " + quoted(path("bin/count")) + "\n"
                         "echo \"$@\" >> " + quoted(path("bin/sbatch.log")) + "\necho $n\n");
        script("scontrol", "case \"$4\" in\n"
                           "41) echo 'JobId=41 JobName=fizzle-fill JobState=COMPLETED' ;;\n"
                           "42) echo 'JobId=43 ArrayJobId=42 ArrayTaskId=1 JobState=RUNNING'\n"
                           "    echo 'JobId=42 ArrayJobId=42 ArrayTaskId=0,2 JobState=PENDING' ;;\n"
                           "*) echo 'Invalid job id specified'; exit 1 ;;\nesac\n");
    }

    void script(const std::string &name, const std::string &body) {
        std::ofstream(path("bin/" + name)) << "#!/bin/sh\n" << body;
        chmod(path("bin/" + name).c_str(), 0755);
    }

    RunResult farm(const std::vector<std::string> &arguments) const {
        std::string command = "PATH=" + quoted(path("bin")) + ":\"$PATH\" " + quoted(FIZZLE_FARM_PATH);
        for (const std::string &argument : arguments) command += " " + quoted(argument);
        const std::string out = path("farm.out"), err = path("farm.err");
        const int status = std::system((command + " >" + quoted(out) + " 2>" + quoted(err)).c_str());
        RunResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(out), slurp(err)};
        fs::remove(out);
        fs::remove(err);
        return result;
    }
};

}  // namespace

TEST_F(FizzleFarm, SubmitsTheCacheFillThenAChunkArrayThatWaitsForIt) {
    const RunResult submitted = farm({"submit", "--frames", "1-20", "--chunk", "8", "--preset", "Soap", "--preroll",
                                      "-o", path("shot/f.%04d.png")});
    ASSERT_EQ(submitted.exit_code, 0) << submitted.err;
    const std::string log = slurp(path("bin/sbatch.log"));
    EXPECT_NE(log.find("--job-name=fizzle-fill"), std::string::npos) << log;
    EXPECT_NE(log.find("--array=0-2"), std::string::npos) << log;
    EXPECT_NE(log.find("--dependency=afterok:41"), std::string::npos) << log;
    // The fill simulates up to the last chunk; each chunk renders its own frames.
    const std::string fill = slurp(path("shot/fizzle-farm/fill.sh"));
    EXPECT_NE(fill.find("'--simulate-only'"), std::string::npos);
    EXPECT_NE(fill.find("'--frames' '1-16'"), std::string::npos) << fill;
    const std::string chunks = slurp(path("shot/fizzle-farm/chunks.sh"));
    for (const char *range : {"'1-8'", "'9-16'", "'17-20'"}) EXPECT_NE(chunks.find(range), std::string::npos) << range;
    EXPECT_NE(chunks.find("'--preset' 'Soap' '--preroll'"), std::string::npos) << chunks;
    EXPECT_NE(chunks.find("'--skip-existing'"), std::string::npos);

    std::ofstream(path("shot/f.0009.png")) << "a frame";
    const RunResult status = farm({"status", path("shot/fizzle-farm")});
    ASSERT_EQ(status.exit_code, 0) << status.err;
    EXPECT_NE(status.out.find("cache fill   1-16  job 41  COMPLETED"), std::string::npos) << status.out;
    EXPECT_NE(status.out.find("chunk   1  9-16  job 42_1  RUNNING  1/8 frames"), std::string::npos) << status.out;
    EXPECT_NE(status.out.find("chunk   2  17-20  job 42_2  PENDING  0/4 frames"), std::string::npos) << status.out;
    const RunResult waited = farm({"wait", path("shot/fizzle-farm"), "--timeout", "1"});
    EXPECT_EQ(waited.exit_code, 1);
    EXPECT_NE(waited.err.find("gave up waiting"), std::string::npos) << waited.err;
}

TEST_F(FizzleFarm, RefusesWhatItCannotSubmitWithOneLine) {
    struct Case {
        std::vector<std::string> arguments;
        const char *needle;
    };
    const Case cases[] = {
        {{"submit", "--frames", "1-10", "-o", path("still.png")}, "no frame number"},
        {{"submit", "--frames", "1-10", "--cache-every", "5", "--skip-existing", "-o", path("f.%04d.png")},
         "--skip-existing is fizzle-farm's"},
        {{"submit", "--frames", "9-3", "-o", path("f.%04d.png")}, "--frames"},
        {{"submit", "--frames", "1-10", "--manager", "pbs", "-o", path("f.%04d.png")}, "'pbs' is not built"},
        {{"status", path("nowhere")}, "cannot read the job file"},
        {{"status", path("fifo")}, "is a FIFO"},  // refused, not waited on
    };
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    for (const Case &c : cases) {
        SCOPED_TRACE(c.needle);
        const RunResult result = farm(c.arguments);
        EXPECT_NE(result.exit_code, 0);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_NE(result.err.find(c.needle), std::string::npos) << result.err;
    }
    EXPECT_FALSE(fs::exists(path("bin/sbatch.log")));
}
