#pragma once
#include "platform/text/json_check.h"
