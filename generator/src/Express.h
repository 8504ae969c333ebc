#pragma once

#include <express/ExpressError.h>
#include <express/Parser.h>
#include <express/Syntax.h>
#include <express/Text.h>

namespace expgen {

// What is read of a schema is named as often here as what is made of it.
using namespace express;

} // namespace expgen
