# Makes a C++ header of a page: cmake -D PAGE=... -D OUT=... -D NAME=kReportPage -P Embed.cmake. The page takes its style
# and its script in, and a policy that lets the browser run these and nothing else.
cmake_minimum_required(VERSION 3.25)

# A policy names a script by its digest in base64, which CMake gives in hexadecimal digits.
function(base64_of_digest text result)
    string(SHA256 digits "${text}")
    set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    set(encoded "")
    foreach(at RANGE 0 60 6) # three bytes are four digits of base64; 32 bytes leave two for the last
        if(at EQUAL 60)
            string(SUBSTRING "${digits}" 60 4 group)
            string(APPEND group "00")
            set(shifts 18 12 6)
        else()
            string(SUBSTRING "${digits}" ${at} 6 group)
            set(shifts 18 12 6 0)
        endif()
        foreach(shift IN LISTS shifts)
            math(EXPR digit "(0x${group} >> ${shift}) & 63")
            string(SUBSTRING "${alphabet}" ${digit} 1 digit)
            string(APPEND encoded "${digit}")
        endforeach()
    endforeach()
    set(${result} "${encoded}=" PARENT_SCOPE)
endfunction()

cmake_path(GET CMAKE_SCRIPT_MODE_FILE PARENT_PATH folder)
file(READ "${folder}/${PAGE}.html" html)
file(READ "${folder}/page.css" style)
file(READ "${folder}/page.js" shared)
file(READ "${folder}/${PAGE}.js" own)
set(script "${shared}${own}")
base64_of_digest("${script}" script_digest)
base64_of_digest("${style}" style_digest)
set(policy "default-src 'none'; script-src 'sha256-${script_digest}'; style-src 'sha256-${style_digest}'; base-uri 'none'; form-action 'none'")
string(REPLACE "@POLICY@" "${policy}" html "${html}")
string(REPLACE "@STYLE@" "${style}" html "${html}")
string(REPLACE "@SCRIPT@" "${script}" html "${html}")
file(WRITE "${OUT}" "// Made of ${PAGE}.html. Do not edit.
#pragma once
#include <string_view>

namespace vnifc::detail {
inline constexpr std::string_view ${NAME} = R\"page(${html})page\";
} // namespace vnifc::detail
")
