#include "Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace vnifc::test {

namespace {

/// The tool must not find what whoever runs the tests has in the usual places.
[[maybe_unused]] const int kNoRules =
    ::setenv("VNIFC_RULES", "/nonexistent", 1) + ::setenv("XDG_DATA_HOME", "/nonexistent", 1);

struct ScratchDirectory {
    fs::path path = fs::temp_directory_path() / ("vnifc-tests-" + std::to_string(::getpid()));

    ScratchDirectory() { fs::create_directories(path); }
    ~ScratchDirectory() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

int waitFor(pid_t process) {
    int status = 0;
    if (::waitpid(process, &status, 0) != process)
        throw std::runtime_error("the tool is gone");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

const fs::path& scratch() {
    static const ScratchDirectory directory;
    return directory.path;
}

Outcome run(const fs::path& program, const std::vector<std::string>& arguments, const Streams& streams) {
    const fs::path out = streams.out.empty() ? scratch() / "stdout" : streams.out;
    const fs::path err = scratch() / "stderr";
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, 0, streams.in.c_str(), O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::posix_spawn_file_actions_addopen(&files, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = 0;
    const int failure = ::posix_spawn(&process, program.c_str(), &files, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&files);
    if (failure != 0)
        throw std::runtime_error("the tool does not start");
    const int exitCode = waitFor(process);
    return {exitCode, streams.out.empty() ? contents(out) : std::string(), contents(err)};
}

Outcome runTool(const std::vector<std::string>& arguments, const Streams& streams) {
    return run(VNIFC_TOOL, arguments, streams);
}

fs::path makeFile(const std::string& name, std::string_view content) {
    const fs::path file = scratch() / name;
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

fs::path makeModel(const std::string& name, std::string_view instances, std::string_view schema) {
    return makeFile(name, fileOf(schema, instances));
}

} // namespace vnifc::test
