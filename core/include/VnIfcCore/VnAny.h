#pragma once
#include <VnIfcCore/VnTypeCode.h>
