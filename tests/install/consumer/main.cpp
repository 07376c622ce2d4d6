// A program outside the project, built against the installed package: it uses the library
// the way a host does and exits non-zero when anything is off.

#include <cstdio>

#include "geom/Formwork.h"

namespace {

class Part : public koGeom::Entity {
public:
    void moved() {
        koGeom::TransformModification mod(this);
        sendMessage(mod);
    }
};

struct View : koRTB::SignalClient {
    void onModified(koGeom::EntityModification& mod) {
        if (mod.getType() == koGeom::EntityModificationType::Transform) {
            ++transforms;
        }
    }
    int transforms = 0;
};

} // namespace

int main() {
    const int before = koGeom::numberOfActiveEntities();
    View view;
    {
        ko::Reference<Part> part(new Part);
        part->modifiedSignal.connect(view, &View::onModified);
        part->moved();
        if (koGeom::numberOfActiveEntities() != before + 1) {
            std::puts("entity count wrong");
            return 1;
        }
    }
    if (view.transforms != 1 || koGeom::numberOfActiveEntities() != before) {
        std::puts("notice or count wrong");
        return 1;
    }
    std::puts("consumer ok");
    return 0;
}
