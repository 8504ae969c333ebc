#pragma once
#include <VnIfcCore/VnIfcAttributeDefinition.h>
