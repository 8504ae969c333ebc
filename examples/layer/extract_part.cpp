// Copies a part of a model into a file of its own: what a selector picks and everything that it needs to stand alone.
#include <vnifc/Extract.h>
#include <vnifc/Model.h>
#include <vnifc/Selector.h>

#include <iostream>
#include <vector>

int main(int argc, char** argv) try {
    vnifc::Model model = vnifc::open(argc > 1 ? argv[1] : "house.ifc");
    const auto range = vnifc::select(model, argc > 2 ? argv[2] : "IfcWall");
    const std::vector<vnifc::Instance> picked(range.begin(), range.end());
    const vnifc::ExtractResult result = vnifc::extract(model, picked);
    model.save(argc > 3 ? argv[3] : "part.ifc");
    std::cout << picked.size() << " picked, " << result.kept << " kept, " << result.removed << " removed\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
