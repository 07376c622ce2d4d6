// The editing operations of the half-edge mesh. Every write to an existing record is preceded
// by a report of that record (`touch`), so that a mesh with transactions can be brought back
// to a saved state; new records are reported as created by the record primitives. The order
// in which records are created, twins looked up and fans walked is part of each operation's
// result: it decides which records end up where.

#include <set>

#include "geom/topomesh/TopoMeshEdgeVertexIterator.h"
#include "geom/topomesh/TopoMeshImpl.h"

namespace koGeom {

using koLinear::Point;
using E = TopoMeshEdgeData;
using V = TopoMeshVertexData;
using F = TopoMeshFaceData;

// ---- Small steps -------------------------------------------------------------------------

void TopoMeshImpl::setTwinLinks(E* e1, E* e2) {
    touch(e1);
    e1->twin = e2;
    touch(e2);
    e2->twin = e1;
}

// A link that already holds the value is not a change, so nothing is written or reported.
template <class Record, class Link>
void TopoMeshImpl::setLink(Record* record, Link* Record::*field, Link* value) {
    if (record->*field != value) {
        touch(record);
        record->*field = value;
    }
}

void TopoMeshImpl::setOrigin(E* edge, V* vertex) { setLink(edge, &E::vertex, vertex); }

void TopoMeshImpl::setFace(E* edge, F* face) { setLink(edge, &E::face, face); }

void TopoMeshImpl::setVertexEdge(V* vertex, E* edge) { setLink(vertex, &V::firstEdge, edge); }

void TopoMeshImpl::setFaceEdge(F* face, E* edge) { setLink(face, &F::firstEdge, edge); }

void TopoMeshImpl::linkTriangle(E* e, E* a, E* b, F* face) {
    touch(e);
    e->next = a;
    e->prev = b;
    e->face = face;
    a->next = b;
    a->prev = e;
    a->face = face;
    b->next = e;
    b->prev = a;
    b->face = face;
}

void TopoMeshImpl::repairFirstEdge(E* edge, const F* going) {
    V* vertex = edge->vertex;
    if (vertex->firstEdge != edge) {
        return;
    }
    E* other = nullptr;
    for (TopoMeshEdgeVertexIterator it(vertex); it.valid(); it.next()) {
        if (it.edge() != edge && it.edge().face() != going) {
            other = it.edge();
            break;
        }
    }
    setVertexEdge(vertex, other);
}

void TopoMeshImpl::reassignOrigins(V* vertex) {
    for (TopoMeshEdgeVertexIterator it(vertex); it.valid(); it.next()) {
        setOrigin(it.edge(), vertex);
    }
}

void TopoMeshImpl::setLoopFace(E* from, const E* until, F* face) {
    for (E* e = from; e != until; e = e->next) {
        setFace(e, face);
    }
}

E* TopoMeshImpl::insertAfter(E* edge, V* vertex) {
    E* added = allocEdgeRecord();
    E* after = edge->next;
    added->prev = edge;
    added->next = after;
    touch(after);
    after->prev = added;
    touch(edge);
    edge->next = added;
    added->vertex = vertex;
    if (vertex->firstEdge == nullptr) {
        setVertexEdge(vertex, added);
    }
    added->face = edge->face;
    return added;
}

// ---- Creating faces and looking up ------------------------------------------------------

TopoMeshFace TopoMeshImpl::allocLoop(const TopoMeshVertex* vertices, std::size_t count) {
    F* face = allocFaceRecord();
    // The new half-edges are consecutive in the edge list: the loop is linked from there, so
    // no scratch array is needed.
    E* first = nullptr;
    E* last = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        E* e = allocEdgeRecord();
        if (first == nullptr) {
            first = e;
        } else {
            last->next = e;
            e->prev = last;
        }
        last = e;
    }
    face->firstEdge = first;
    last->next = first;
    first->prev = last;
    E* e = first;
    for (std::size_t i = 0; i < count; ++i, e = e->next) {
        V* vertex = vertices[i];
        e->face = face;
        e->vertex = vertex;
        if (vertex->firstEdge == nullptr) {
            setVertexEdge(vertex, e);
        }
    }
    // Each new half-edge pairs with a half-edge of the mesh from its end back to its origin.
    // Safe: one that already has a twin is left as it is, so that no third face breaks an
    // existing pair.
    e = first;
    for (std::size_t i = 0; i < count; ++i, e = e->next) {
        E* opposite = findEdge(vertices[(i + 1) % count], vertices[i]);
        if (opposite != nullptr && opposite->twin == nullptr) {
            setTwinLinks(e, opposite);
        }
    }
    return face;
}

TopoMeshFace TopoMeshImpl::allocTriangle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c) {
    const TopoMeshVertex corners[3] = {a, b, c};
    return allocLoop(corners, 3);
}

TopoMeshFace TopoMeshImpl::allocQuad(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c,
                                     TopoMeshVertex d) {
    const TopoMeshVertex corners[4] = {a, b, c, d};
    return allocLoop(corners, 4);
}

TopoMeshFace TopoMeshImpl::allocFace(const ko::vector<TopoMeshVertex>& vertices) {
    if (vertices.empty()) {
        return TopoMeshFace();
    }
    return allocLoop(vertices.data(), vertices.size());
}

TopoMeshEdge TopoMeshImpl::findEdge(TopoMeshVertex from, TopoMeshVertex to) noexcept {
    for (TopoMeshEdgeVertexIterator it(from); it.valid(); it.next()) {
        if (it.edge().secondVertex() == to) {
            return it.edge();
        }
    }
    return TopoMeshEdge();
}

TopoMeshFace TopoMeshImpl::findFace(TopoMeshEdge e1, TopoMeshEdge e2) noexcept {
    if (e1.face() == e2.face()) {
        return e1.face();
    }
    const TopoMeshEdge t1 = e1.twin();
    const TopoMeshEdge t2 = e2.twin();
    if (t1 && t1.face() == e2.face()) {
        return e2.face();
    }
    if (t2 && t2.face() == e1.face()) {
        return e1.face();
    }
    if (!t1 || !t2) {
        return TopoMeshFace();
    }
    return t1.face() == t2.face() ? t1.face() : TopoMeshFace();
}

void TopoMeshImpl::setTwins(TopoMeshEdge e1, TopoMeshEdge e2) { setTwinLinks(e1, e2); }

void TopoMeshImpl::setFirstEdge(TopoMeshVertex vertex, TopoMeshEdge edge) {
    setVertexEdge(vertex, edge);
}

void TopoMeshImpl::setPoint(TopoMeshVertex vertex, const Point& point) {
    touch(vertex);
    vertex.data()->point = point;
}

// ---- Deleting ----------------------------------------------------------------------------

void TopoMeshImpl::deleteFace(TopoMeshFace face) {
    E* first = face.data()->firstEdge;
    E* e = first;
    // Safe: a corner that the loop passes twice does not get another half-edge of the face
    // as its first edge; round a corner passed once no other half-edge lies in the face.
    do {
        repairFirstEdge(e, face);
        e = e->next;
    } while (e != first);
    do {
        E* next = e->next;
        if (e->twin != nullptr && e->twin->twin == e) {
            touch(e->twin);
            e->twin->twin = nullptr;
        }
        freeEdgeRecord(e);
        e = next;
    } while (e != first);
    freeFaceRecord(face);
}

bool TopoMeshImpl::deleteEdge(TopoMeshEdge edge) {
    E* e = edge;
    E* t = e->twin;
    if (t == nullptr) {
        return false;
    }
    // Deliberate: nothing beyond the twin is checked, not even that the two half-edges lie
    // in different faces; callers that merge faces know they do.
    F* kept = e->face;
    F* gone = t->face;
    E* g = gone->firstEdge;
    do {
        setFace(g, kept);
        g = g->next;
    } while (g != gone->firstEdge);
    if (kept->firstEdge == e) {
        setFaceEdge(kept, e->next);
    }
    repairFirstEdge(e);
    repairFirstEdge(t);
    E* ep = e->prev;
    E* en = e->next;
    E* tp = t->prev;
    E* tn = t->next;
    touch(ep);
    ep->next = tn;
    touch(en);
    en->prev = tp;
    touch(tn);
    tn->prev = ep;
    touch(tp);
    tp->next = en;
    touch(e);
    e->twin = nullptr;
    freeEdgeRecord(e);
    touch(t);
    t->twin = nullptr;
    freeEdgeRecord(t);
    setFaceEdge(gone, nullptr);
    freeFaceRecord(gone);
    return true;
}

TopoMeshFace TopoMeshImpl::deleteVertex(TopoMeshVertex vertex) {
    const int valence = vertex.valence();
    if (valence == 1) {
        deleteFace(vertex.firstEdge().face());
        freeVertexRecord(vertex);
        return TopoMeshFace();
    }
    if (valence != 3) {
        // Deliberate: any other valence frees the vertex alone and leaves its half-edges as
        // they are; callers delete the faces around such a vertex first.
        freeVertexRecord(vertex);
        return TopoMeshFace();
    }
    TopoMeshVertex ends[3];
    TopoMeshFace faces[3];
    TopoMeshEdge outer[3];
    int k = 0;
    for (TopoMeshEdgeVertexIterator it(vertex); it.valid(); it.next(), ++k) {
        ends[k] = it.edge().secondVertex();
        faces[k] = it.edge().face();
        outer[k] = it.edge().next().twin();
    }
    for (k = 0; k < 3; ++k) {
        // Safe: a face met twice around the vertex is deleted once.
        if ((k < 1 || faces[k] != faces[0]) && (k < 2 || faces[k] != faces[1])) {
            deleteFace(faces[k]);
        }
    }
    const TopoMeshFace triangle = allocTriangle(ends[0], ends[1], ends[2]);
    E* side = triangle.data()->firstEdge;
    for (k = 0; k < 3; ++k, side = side->next) {
        if (outer[k] && !outer[k].twin()) {
            setTwinLinks(side, outer[k]);
        }
    }
    freeVertexRecord(vertex);
    return triangle;
}

void TopoMeshImpl::deleteFaces(const ko::unordered_set<TopoMeshFace>& faces,
                               const ko::vector<TopoMeshEdge>& border) {
    std::set<TopoMeshVertex> kept;
    for (TopoMeshEdge e : border) {
        kept.insert(e.firstVertex());
    }
    std::set<TopoMeshEdge> edges;
    std::set<TopoMeshVertex> vertices;
    for (TopoMeshFace face : faces) {
        TopoMeshEdge e = face.firstEdge();
        while (e && edges.insert(e).second) {
            if (kept.count(e.firstVertex()) == 0) {
                vertices.insert(e.firstVertex());
            }
            e = e.next();
        }
    }
    for (TopoMeshEdge e : border) {
        setVertexEdge(e.firstVertex(), e);
        touch(e);
        e.data()->twin = nullptr;
    }
    for (TopoMeshFace face : faces) {
        freeFaceRecord(face);
    }
    for (TopoMeshEdge e : edges) {
        freeEdgeRecord(e);
    }
    for (TopoMeshVertex v : vertices) {
        freeVertexRecord(v);
    }
}

void TopoMeshImpl::deleteValenceTwoVertex(TopoMeshVertex vertex) {
    const int valence = vertex.valence();
    if (valence != 2 && !(valence == 1 && vertex.onBoundary())) {
        return;
    }
    E* e = vertex.firstEdge();
    E* p = e->prev;
    E* n = e->next;
    E* t = p->twin;
    E* tp = t != nullptr ? t->prev : nullptr;
    E* tn = t != nullptr ? t->next : nullptr;
    if (n->next == p || (t != nullptr && tn->next == tp)) {
        return;
    }
    // Safe: the two sides must pair up again after the merge (e's twin is the half-edge into
    // the vertex on the other side); a boundary vertex between two faces does not, and is
    // left alone.
    if (e->twin != tp) {
        return;
    }
    touch(p);
    p->next = n;
    touch(n);
    n->prev = p;
    if (e->face->firstEdge == e) {
        setFaceEdge(e->face, p);
    }
    freeEdgeRecord(e);
    if (t != nullptr) {
        touch(tp);
        tp->next = tn;
        touch(tn);
        tn->prev = tp;
        if (t->face->firstEdge == t) {
            setFaceEdge(t->face, tp);
        }
        setTwinLinks(tp, p);
        freeEdgeRecord(t);
    }
    freeVertexRecord(vertex);
}

// ---- Contracting, splitting and merging --------------------------------------------------

TopoMeshVertex TopoMeshImpl::contractEdge(TopoMeshEdge edge) {
    E* e = edge;
    E* n = e->next;
    E* p = e->prev;
    V* v = e->vertex;
    V* w = n->vertex;
    E* pt = p->twin;
    E* nt = n->twin;
    // Deliberate: only e's own face goes; e's twin and the face behind it keep their links
    // (the twin now runs from the kept vertex to itself), as the operation is meant for a
    // boundary triangle or one whose neighbour the caller handles.
    deleteFace(e->face);
    if (pt != nullptr) {
        for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next()) {
            setOrigin(it.edge(), w);
        }
        setVertexEdge(w, pt);
        if (nt != nullptr) {
            setTwinLinks(pt, nt);
        }
    }
    freeVertexRecord(v);
    return w;
}

void TopoMeshImpl::splitEdge(TopoMeshEdge edge) {
    E* e = edge;
    E* t = e->twin;
    if (t == nullptr) {
        return; // Safe: a boundary edge is cut already.
    }
    V* a = e->vertex;
    V* b = e->next->vertex;
    V* a2 = allocVertex(a->point);
    V* b2 = allocVertex(b->point);
    touch(e);
    e->twin = nullptr;
    touch(t);
    t->twin = nullptr;
    setVertexEdge(a, e);
    setVertexEdge(b, e->next);
    setVertexEdge(a2, t->next);
    setVertexEdge(b2, t);
    reassignOrigins(a2);
    reassignOrigins(b2);
}

TopoMeshVertex TopoMeshImpl::splitVertex(TopoMeshVertex vertex, TopoMeshEdge edge) {
    E* e = edge;
    E* t = e->twin;
    if (t == nullptr) {
        return TopoMeshVertex(); // Safe: a boundary edge is cut already.
    }
    V* w = allocVertex(vertex.point());
    touch(e);
    e->twin = nullptr;
    touch(t);
    t->twin = nullptr;
    setVertexEdge(vertex, e);
    setVertexEdge(w, t->next);
    reassignOrigins(w);
    return w;
}

TopoMeshVertex TopoMeshImpl::splitVertex(TopoMeshEdge into, TopoMeshEdge outOf) {
    E* e1 = into;
    E* e2 = outOf;
    E* t1 = e1->twin;
    E* t2 = e2->twin;
    for (E* e : {e1, t1, e2, t2}) {
        if (e != nullptr && e->twin != nullptr) {
            touch(e);
            e->twin = nullptr;
        }
    }
    V* v = e2->vertex;
    V* w = allocVertex(v->point);
    setVertexEdge(w, t1);
    setVertexEdge(v, e2);
    for (E* e = t1; e != nullptr; e = e->prev->twin) {
        setOrigin(e, w);
    }
    return w;
}

void TopoMeshImpl::splitFace(TopoMeshEdge edge1, TopoMeshEdge edge2) {
    E* e1 = edge1;
    E* e2 = edge2;
    if (e1 == e2 || e1->face != e2->face) {
        return; // Safe: no diagonal joins a corner to itself or two faces.
    }
    E* a = allocEdgeRecord();
    E* b = allocEdgeRecord();
    a->vertex = e2->vertex;
    b->vertex = e1->vertex;
    a->prev = e2->prev;
    a->next = e1;
    b->prev = e1->prev;
    b->next = e2;
    touch(e2);
    e2->prev = b;
    touch(e1);
    e1->prev = a;
    touch(b->prev);
    b->prev->next = b;
    touch(a->prev);
    a->prev->next = a;
    setTwinLinks(a, b);
    F* g = allocFaceRecord();
    g->firstEdge = a;
    F* old = e2->face;
    setFaceEdge(old, b);
    b->face = old;
    a->face = g;
    setLoopFace(e1, a, g);
}

TopoMeshEdge TopoMeshImpl::subdivideFace(TopoMeshFace face, TopoMeshVertex from,
                                         TopoMeshVertex to) {
    E* e1 = face.adjacent(from);
    E* e2 = face.adjacent(to);
    if (e1 == nullptr || e2 == nullptr || e1 == e2) {
        return TopoMeshEdge(); // Safe: both vertices must be distinct corners of the face.
    }
    F* f = face;
    E* a = allocEdgeRecord();
    E* b = allocEdgeRecord();
    F* g = allocFaceRecord();
    setFaceEdge(f, a);
    g->firstEdge = b;
    a->vertex = from;
    b->vertex = to;
    a->next = e2;
    b->next = e1;
    a->prev = e1->prev;
    b->prev = e2->prev;
    touch(e1->prev);
    e1->prev->next = a;
    touch(e1);
    e1->prev = b;
    touch(e2->prev);
    e2->prev->next = b;
    touch(e2);
    e2->prev = a;
    a->face = f;
    b->face = g;
    setLoopFace(e1, b, g);
    setTwinLinks(a, b);
    return a;
}

TopoMeshVertex TopoMeshImpl::subdivideEdge(TopoMeshEdge edge, const Point& point) {
    V* m = allocVertex(point);
    E* e = edge;
    E* t = e->twin;
    E* ne = insertAfter(e, m);
    if (e->twin != nullptr) {
        touch(e);
        e->twin = nullptr;
    }
    if (t != nullptr) {
        E* te = insertAfter(t, m);
        touch(t);
        t->twin = nullptr;
        setTwinLinks(ne, t);
        setTwinLinks(e, te);
    }
    return m;
}

TopoMeshVertex TopoMeshImpl::subdivideFace(TopoMeshFace face, const Point& point) {
    V* c = allocVertex(point);
    F* f = face;
    E* e0 = f->firstEdge;
    E* e = e0;
    E* firstB = nullptr;
    E* lastA = nullptr;
    do {
        E* next = e->next;
        F* tri = e == e0 ? f : allocFaceRecord().data();
        setFaceEdge(tri, e);
        E* a = allocEdgeRecord();
        E* b = allocEdgeRecord();
        a->vertex = next->vertex;
        b->vertex = c;
        linkTriangle(e, a, b, tri);
        if (e == e0) {
            setVertexEdge(c, b);
            firstB = b;
        } else {
            setTwinLinks(lastA, b);
        }
        lastA = a;
        e = next;
    } while (e != e0);
    setTwinLinks(firstB, lastA);
    return c;
}

TopoMeshVertex TopoMeshImpl::subdivideFace(TopoMeshFace face, TopoMeshEdge edge,
                                           const Point& point) {
    F* f = face;
    E* e = edge;
    V* a = e->vertex;
    E* n = e->next;
    V* b = n->vertex;
    E* pr = e->prev;
    V* c = allocVertex(point);
    E* e1 = allocEdgeRecord();
    E* e2 = allocEdgeRecord();
    E* e3 = allocEdgeRecord();
    E* e4 = allocEdgeRecord();
    F* g = allocFaceRecord();
    setVertexEdge(c, e2);
    setVertexEdge(a, e);
    setVertexEdge(b, n);
    setFaceEdge(f, n);
    g->firstEdge = e;
    e1->vertex = a;
    e2->vertex = c;
    e3->vertex = c;
    e4->vertex = b;
    touch(pr);
    pr->next = e1;
    e1->prev = pr;
    e1->next = e2;
    e2->prev = e1;
    e2->next = n;
    touch(n);
    n->prev = e2;
    e1->face = f;
    e2->face = f;
    linkTriangle(e, e4, e3, g);
    setTwinLinks(e1, e3);
    setTwinLinks(e2, e4);
    return c;
}

TopoMeshFace TopoMeshImpl::subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to,
                                         const ko::vector<Point>& points,
                                         ko::vector<TopoMeshVertex>& newVertices) {
    const std::size_t k = points.size();
    newVertices.assign(k, TopoMeshVertex());
    const TopoMeshEdge e = findEdge(from, to);
    const TopoMeshEdge r = findEdge(to, from);
    TopoMeshEdge x;
    // Safe: with no points there is no apex to cut off over an existing edge, so the cut is
    // the plain new edge.
    if (k > 0 && e && e.face() == face) {
        newVertices[0] = subdivideFace(face, e, points[0]);
        x = e.next().twin();
        for (std::size_t i = 1; i < k; ++i, x = x.next()) {
            newVertices[i] = subdivideEdge(x, points[i]);
        }
    } else if (k > 0 && r && r.face() == face) {
        newVertices[k - 1] = subdivideFace(face, r, points[k - 1]);
        x = r.next().twin();
        for (std::size_t i = k - 1; i-- > 0; x = x.next()) {
            newVertices[i] = subdivideEdge(x, points[i]);
        }
    } else {
        x = subdivideFace(face, from, to);
        if (!x) {
            return TopoMeshFace();
        }
        for (std::size_t i = 0; i < k; ++i, x = x.next()) {
            newVertices[i] = subdivideEdge(x, points[i]);
        }
    }
    return x.twin().face();
}

bool TopoMeshImpl::swapEdge(TopoMeshEdge edge) {
    E* e = edge;
    E* t = e->twin;
    if (t == nullptr) {
        return false; // Safe: a boundary edge has no second triangle to flip into.
    }
    E* n = e->next;
    E* p = e->prev;
    E* tn = t->next;
    E* tp = t->prev;
    V* x = p->vertex;
    V* y = tp->vertex;
    if (findEdge(x, y) || findEdge(y, x)) {
        return false;
    }
    touch(n);
    n->prev = tp;
    setVertexEdge(n->vertex, n);
    touch(tp);
    tp->next = n;
    setVertexEdge(y, tp);

    touch(tn);
    tn->prev = p;
    setVertexEdge(tn->vertex, tn);
    touch(p);
    p->next = tn;
    setVertexEdge(x, p);

    touch(e);
    e->vertex = x;
    setVertexEdge(x, e);
    e->next = tp;
    e->prev = n;
    n->next = e;
    tp->prev = e;
    n->face = e->face;
    tp->face = e->face;
    setFaceEdge(e->face, e);

    touch(t);
    t->vertex = y;
    setVertexEdge(y, t);
    t->next = p;
    t->prev = tn;
    tn->next = t;
    p->prev = t;
    tn->face = t->face;
    p->face = t->face;
    setFaceEdge(t->face, t);
    return true;
}

void TopoMeshImpl::mergeVertices(TopoMeshEdge edge1, TopoMeshEdge edge2) {
    E* e1 = edge1;
    E* e2 = edge2;
    V* a = e1->vertex;
    V* b = e1->next->vertex;
    V* c = e2->vertex;
    V* d = e2->next->vertex;
    if (a != d && b == c) {
        freeVertexRecord(d);
        setOrigin(e2->next, a);
        setTwinLinks(e1, e2);
        reassignOrigins(a);
    } else if (a != d) {
        freeVertexRecord(c);
        freeVertexRecord(d);
        setOrigin(e2, b);
        setOrigin(e2->next, a);
        setTwinLinks(e1, e2);
        reassignOrigins(a);
        reassignOrigins(b);
    } else if (b == c) {
        setTwinLinks(e1, e2);
    } else {
        freeVertexRecord(c);
        setOrigin(e2, b);
        setTwinLinks(e1, e2);
        reassignOrigins(b);
    }
}

void TopoMeshImpl::mergeFaces(TopoMeshEdge edge1, TopoMeshEdge edge2) {
    E* e1 = edge1;
    E* e2 = edge2;
    E* t1 = e1->twin;
    E* t2 = e2->twin;
    // Safe: the two edges must follow each other in one face and their twins in another;
    // anything else is left alone.
    if (t1 == nullptr || t2 == nullptr || e1->next != e2 || t2->next != t1 ||
        t1->face == e1->face) {
        return;
    }
    F* f = e1->face;
    F* other = t1->face;
    V* middle = e2->vertex;
    if (f->firstEdge == e1 || f->firstEdge == e2) {
        setFaceEdge(f, e2->next);
    }
    touch(e1->prev);
    e1->prev->next = t1->next;
    touch(t1->next);
    t1->next->prev = e1->prev;
    setVertexEdge(e1->vertex, t1->next);
    touch(t2->prev);
    t2->prev->next = e2->next;
    setVertexEdge(e2->next->vertex, e2->next);
    touch(e2->next);
    e2->next->prev = t2->prev;
    setLoopFace(e1->prev->next, e2->next, f);
    setVertexEdge(middle, nullptr);
    freeVertexRecord(middle);
    setFaceEdge(other, nullptr);
    for (E* e : {e1, e2, t1, t2}) {
        touch(e);
        e->vertex = nullptr;
        e->next = nullptr;
        e->prev = nullptr;
        e->twin = nullptr;
        e->face = nullptr;
    }
    freeEdgeRecord(e1);
    freeEdgeRecord(t1);
    freeEdgeRecord(e2);
    freeEdgeRecord(t2);
    freeFaceRecord(other);
}

} // namespace koGeom
