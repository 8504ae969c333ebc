#pragma once
#include "Declarations.h"
#include "PlainReader.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vnifc::test {

/// Files of other programs, which are not part of this project; they may not be there.
std::filesystem::path corpus();
/// All of them, by name; none when they are not there.
std::vector<std::filesystem::path> corpusFiles();
/// Those among them whose release is built.
std::vector<std::filesystem::path> readableCorpusFiles();

/// The release whose declarations a file of the corpus follows, by its FILE_SCHEMA.
std::string releaseOf(const plain::File& file);

/// What is in a file but did not come out the same, one line for each instance. The release tells what is a SET.
std::string lossesOf(const plain::File& before, const plain::File& after, const declared::Schema& release);

} // namespace vnifc::test
