// Lists the walls of a model with their storeys and property sets.
#include <vnifc/Model.h>
#include <vnifc/Properties.h>
#include <vnifc/Relations.h>

#include <iostream>

int main(int argc, char** argv) try {
    const vnifc::Model model = vnifc::open(argc > 1 ? argv[1] : "house.ifc");
    for (const vnifc::Instance wall : model.instances("IfcWall")) {
        const vnifc::Instance storey = vnifc::storey(wall);
        std::cout << wall.name() << " in " << (storey ? storey.name() : "no storey") << '\n';
        for (const vnifc::PropertySet& set : vnifc::propertySets(wall))
            for (const vnifc::Property& property : set.properties)
                std::cout << "  " << set.name << '.' << property.name << " = " << property.value() << '\n';
    }
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
