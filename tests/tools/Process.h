#pragma once
#include "support/Files.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc::test {

struct Outcome {
    int exitCode; ///< negative: the number of the signal that ended the process
    std::string out;
    std::string err;
};

/// Where the process' streams come from and go to.
struct Streams {
    std::filesystem::path in = "/dev/null";
    std::filesystem::path out = {}; ///< empty: into Outcome::out
};

/// Runs a program to its end.
Outcome run(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const Streams& streams = {});
/// Runs the command-line tool to its end.
Outcome runTool(const std::vector<std::string>& arguments, const Streams& streams = {});

/// A directory for this process' files, removed at its end.
const std::filesystem::path& scratch();

std::filesystem::path makeFile(const std::string& name, std::string_view content);
/// An exchange file with these instances.
std::filesystem::path makeModel(const std::string& name, std::string_view instances,
                                std::string_view schema = "IFC4X3_ADD2");

/// A file of the tests' own.
inline std::string dataFile(const std::string& name) { return VNIFC_TEST_DATA "/data/" + name; }
/// The model that most of them look at.
inline const std::string house = dataFile("house.ifc");

} // namespace vnifc::test
