#pragma once

// Runs mxf-inspect as a program and reads the fixtures' expectations, for the tool's tests.
#include "TestSupport.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace Halvorn::Test
{

inline std::string testData(const std::string& name)
{
    const char* dir = std::getenv("HALVORN_TEST_DATA");
    return std::string(dir ? dir : "tests/data") + "/" + name;
}

inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in)
        return "";
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

struct Outcome
{
    int status = -1; // exit status; -1 if killed
    std::vector<std::string> lines;
    std::string err;
};

// Runs the tool with a time limit: a hang is a failure, not a stuck test.
inline Outcome inspect(const std::vector<std::string>& args)
{
    TempDir dir;
    const auto outPath = dir.path() / "out";
    const auto errPath = dir.path() / "err";
    std::vector<char*> argv{const_cast<char*>(MXF_INSPECT_PATH)};
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);

    const pid_t child = ::fork();
    if (child == 0)
    {
        const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(out, 1);
        ::dup2(err, 2);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    Outcome run;
    int wstatus = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (::waitpid(child, &wstatus, WNOHANG) == 0)
    {
        if (std::chrono::steady_clock::now() > deadline)
        {
            ::kill(child, SIGKILL);
            ::waitpid(child, &wstatus, 0);
            ADD_FAILURE() << "mxf-inspect did not finish within 60 s";
            return run;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(WIFEXITED(wstatus)) << "ended by signal " << WTERMSIG(wstatus);
    run.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
    std::istringstream out(readFile(outPath));
    for (std::string line; std::getline(out, line);)
        run.lines.push_back(line);
    run.err = readFile(errPath);
    return run;
}

inline bool oneLine(const std::string& text)
{
    return !text.empty() && text.find('\n') == text.size() - 1;
}

// damage-offsets.txt: "FILE WHAT VALUE".
inline unsigned long long damage(const std::string& file, const std::string& what)
{
    std::ifstream in(testData("damage-offsets.txt"));
    std::string f, w;
    unsigned long long value;
    while (in >> f >> w >> value)
        if (f == file + ".mxf" && w == what)
            return value;
    ADD_FAILURE() << "no " << what << " for " << file;
    return 0;
}

// The last line of expected/NAME.ffprobe-packets.csv: its size and pos.
inline std::pair<unsigned long long, unsigned long long> lastPacket(const std::string& fixture)
{
    std::ifstream in(testData("expected/" + fixture + ".ffprobe-packets.csv"));
    std::string last;
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            last = line;
    std::vector<std::string> fields;
    std::istringstream row(last);
    for (std::string field; std::getline(row, field, ',');)
        fields.push_back(field);
    EXPECT_EQ(fields.size(), 7u);
    return {std::stoull(fields.at(4)), std::stoull(fields.at(5))};
}

} // namespace Halvorn::Test
