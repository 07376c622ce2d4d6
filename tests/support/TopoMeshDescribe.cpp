#include "tests/support/TopoMeshDescribe.h"

#include <unordered_map>

namespace koGeomTest {

using namespace koGeom;

std::string describeTopoMesh(const TopoMesh& mesh) {
    std::unordered_map<TopoMeshVertex, int> index;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        index.emplace(v, static_cast<int>(index.size()));
    }
    const auto name = [&](TopoMeshVertex v) {
        auto found = index.find(v);
        return found == index.end() ? std::string("?") : std::to_string(found->second);
    };
    const auto edgeName = [&](TopoMeshEdge e) { return name(e.v1()) + ">" + name(e.v2()); };
    std::string text = "faces";
    const char* separator = " ";
    for (TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
        text += separator;
        separator = ",";
        TopoMeshEdge e = f.firstEdge();
        do {
            text += (e == f.firstEdge() ? "" : " ") + name(e.v1());
            e = e.next();
        } while (e != f.firstEdge());
    }
    text += "; open";
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        if (!e.twin()) {
            text += " " + edgeName(e);
        } else if (e.twin().v1() != e.v2() || e.twin().v2() != e.v1()) {
            text += " badtwin " + edgeName(e);
        }
    }
    text += "; first";
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        text += " " + (v.firstEdge() ? edgeName(v.firstEdge()) : std::string("-"));
    }
    return text;
}

} // namespace koGeomTest
