// Whether the loaded hardware is what the capture map describes.
#pragma once

#include "platform/plan/insert_plan.h"
#include "platform/reader/hub_link.h"

namespace ost {

/// Finds the hub and compares what each of its cores says of itself with the plan; refuses another project's hardware.
bool identifyHub(HubLink& hub, const InsertPlan& plan, QString& error);

}  // namespace ost
