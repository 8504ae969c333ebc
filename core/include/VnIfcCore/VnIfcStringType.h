#pragma once
#include <VnIfcCore/VnIfcParameterType.h>
