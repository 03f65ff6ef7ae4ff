#include "platform/insert/proof.h"
namespace ost {
bool proveUnchanged(const InsertPlan&, const Design&, std::shared_ptr<const Netlist>, const ProofFiles&, const std::function<bool()>&, ProofReport&, QString&) { return true; }
}
