#pragma once
#include <filesystem>
#include <string>
#include <string_view>

namespace vnifc::test {

/// The bytes of a file.
std::string contents(const std::filesystem::path& file);

/// A whole exchange file with that name in FILE_SCHEMA around the text of a DATA section, which begins in line 8.
std::string fileOf(std::string_view schema, std::string_view data);

} // namespace vnifc::test
