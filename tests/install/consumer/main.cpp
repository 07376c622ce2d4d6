// A program outside the project, built against the installed package: it uses the library
// the way a host does and exits non-zero when anything is off.

#include <cstdio>

#include "crate/Crate.h"
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
    // Records, exported channel names and platform types, as a mesh client uses them.
    koGeom::MeshVertex vertex{};
    const double position[3] = {0.1, 2.0, -3.0};
    vertex.set(position);
    const koLinear::AffineMatrix shift = koLinear::AffineMatrix::makeTranslation({1.0, 0.0, 0.0});
    const koLinear::Point moved = vertex.asPoint() * shift;
    if (moved.x != 1.0 + static_cast<double>(0.1f) ||
        koGeom::meshChannelIndex(koGeom::meshColoursName) != 4 ||
        koGeom::meshChannelIndex("Colours") != -1) {
        std::puts("records or channels wrong");
        return 1;
    }
    koDebugDraw::drawAddMeshPtr(nullptr); // no drawing interface registered: draws nothing

    // A packet round trip: a static crate brings its checksum library along.
    ioWriteContext out;
    out.startPacket("consumer.value");
    out.writeDouble(0.25);
    out.endPacket();
    ioReadContext in(out.buffer().data(), out.buffer().size());
    if (!out.close() || !in.nextPacket() || in.readDouble() != 0.25 || !in.ok()) {
        std::puts("packet round trip wrong");
        return 1;
    }

    std::puts("consumer ok");
    return 0;
}
