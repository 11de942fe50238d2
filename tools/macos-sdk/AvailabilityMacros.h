// See Availability.h.
#pragma once
#include <Availability.h>
