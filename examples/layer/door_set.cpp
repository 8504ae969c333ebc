// Gives all doors of a model a fire rating in their property set, and saves the model.
#include <vnifc/Change.h>

#include <iostream>

int main(int argc, char** argv) try {
    vnifc::Model model = vnifc::open(argc > 1 ? argv[1] : "house.ifc");
    const auto changed = vnifc::setProperty(model.instances("IfcDoor"), "Pset_DoorCommon.FireRating", "EI30");
    model.save(argc > 2 ? argv[2] : "rated.ifc");
    std::cout << changed << " doors rated\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
