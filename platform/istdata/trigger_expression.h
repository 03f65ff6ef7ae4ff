#pragma once
#include "platform/trigger/trigger_expression.h"
