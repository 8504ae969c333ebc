#pragma once
#include <VnIfcCore/VnIfcAggregationType.h>
