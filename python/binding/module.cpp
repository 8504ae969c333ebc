#include "Bindings.h"
#include "Rules.h"

NB_MODULE(_core, module) {
    using namespace vnifc::python;
    module.doc() = "The binding of the C++ library vnifc.";
    bindErrors(module);
    bindFindings(module);
    bindInstance(module);
    bindRules(module);
    bindModel(module);
    bindDiff(module);
}
