#pragma once
#include "platform/text/json_fields.h"
