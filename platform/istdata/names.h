#pragma once
#include "platform/text/names.h"
