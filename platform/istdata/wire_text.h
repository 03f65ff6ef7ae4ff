#pragma once
#include "platform/text/wire_text.h"
