// Prints all attributes of all instances, whatever their entity and release.
#include <vnifc/Model.h>

#include <iostream>

int main(int argc, char** argv) try {
    const vnifc::Model model = vnifc::open(argc > 1 ? argv[1] : "house.ifc");
    for (const vnifc::Instance instance : model.all()) {
        std::cout << '#' << instance.id() << ' ' << instance.type() << '\n';
        for (const auto& attribute : instance.attributes())
            std::cout << "  " << attribute.name() << " = " << attribute.value() << '\n';
    }
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
