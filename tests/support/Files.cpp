#include "Files.h"

#include <fstream>
#include <sstream>

namespace vnifc::test {

std::string contents(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

std::string fileOf(std::string_view schema, std::string_view data) {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n")
        .append("FILE_SCHEMA(('")
        .append(schema)
        .append("'));\nENDSEC;\nDATA;\n")
        .append(data)
        .append("ENDSEC;\nEND-ISO-10303-21;\n");
}

} // namespace vnifc::test
