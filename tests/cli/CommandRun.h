#pragma once

#include "support/ServiceSession.h"

#include <fcntl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo::cli {

using tests::ServiceSession;
using tests::TemporaryFolder;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

/// Runs a program as a child process within the folder.
inline Outcome run(const std::string& program, const std::vector<std::string>& arguments,
                   const TemporaryFolder& folder, const std::string& input = "",
                   const char* standardOutput = nullptr) {
    const TemporaryFolder streams;
    const std::string in = streams.write("in", input);
    const std::string out = standardOutput ? standardOutput : streams.write("out", "");
    const std::string errors = streams.write("errors", "");
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (chdir(folder.path().c_str()) != 0 || dup2(open(in.c_str(), O_RDONLY), 0) < 0 ||
            dup2(open(out.c_str(), O_WRONLY), 1) < 0 || dup2(open(errors.c_str(), O_WRONLY), 2) < 0)
            _exit(126);
        execv(program.c_str(), words.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            standardOutput ? "" : streams.read("out"), streams.read("errors")};
}

inline std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

/// The command on files in a folder of their own, against the service named by the fixture.
class CommandTest : public testing::Test {
protected:
    explicit CommandTest(const char* service = "PlumwickHelper") : session(service) {
        files.write("text.zzz", "words");
        files.write("page.html", "<p>words");
    }

    Outcome plumwick(const std::vector<std::string>& arguments, const std::string& input = "",
                     const char* standardOutput = nullptr) {
        return run(tests::builtProgram("plumwick"), arguments, files, input, standardOutput);
    }

    ServiceSession session;
    TemporaryFolder files;
};

} // namespace kelvo::cli
