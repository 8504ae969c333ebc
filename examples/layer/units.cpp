// Prints the widths of doors in the unit of the project, in feet and in SI, whatever the project measures in.
#include <vnifc/Model.h>
#include <vnifc/Units.h>

#include <iostream>

int main(int argc, char** argv) try {
    const vnifc::Model model = vnifc::open(argc > 1 ? argv[1] : "house.ifc");
    for (const vnifc::Instance door : model.instances("IfcDoor"))
        if (const auto width = vnifc::quantity(door, "OverallWidth"))
            std::cout << door.name() << ": " << width->value << ' ' << width->unit.sign() << " = " << width->in("ft")
                      << " ft = " << width->si() << " m\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
