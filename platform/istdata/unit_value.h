#pragma once
#include "platform/trigger/unit_value.h"
