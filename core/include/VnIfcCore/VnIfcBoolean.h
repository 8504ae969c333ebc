#pragma once
#include <VnIfcCore/VnIfcLogical.h>
