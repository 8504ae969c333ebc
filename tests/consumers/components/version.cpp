// Uses each of the libraries, and finds one of the modules by its name.
#include <IFC4X3_ADD2/Module.h>
#include <VnIfcCore/VnIfcFile.h>
#include <vnifc/version.h>

#include <cstdio>
#include <string_view>

#if VNIFC_VERSION_NUMBER < 200
#error "version.h does not tell the version"
#endif

int main() {
    const VN_SDAI::VnModule linked(IFC4X3_ADD2::vnIfc4x3Add2Module());
    const VN_SDAI::VnIfcFile file = VN_SDAI::vnCreateFile("IFC4X3_ADD2");
    if (!file || !linked.schema() || std::string_view(vnifc::version()) != VNIFC_VERSION)
        return 1;
    std::puts(VN_SDAI::vnIfcVersion());
    return 0;
}
