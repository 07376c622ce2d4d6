#pragma once

#include "geom/FormworkExport.h"
#include "geom/entity/EntityModification.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/rtb/Signal.h"
#include "tessar/rtb/SignalClient.h"

namespace koGeom {

/// The observable, reference-counted base of the library's geometry objects.
///
/// An entity tells its listeners two things: that it changed (a notice broadcast on
/// `modifiedSignal` by `sendMessage` or `resendMessage`) and that it is being destroyed (its
/// own address, broadcast on `deletedSignal` from the destructor). Listeners are called in
/// connection order, synchronously, on the thread that sends.
///
/// Every entity is counted in the process-wide count of `numberOfActiveEntities()` from the
/// end of its construction to the start of its destruction.
///
/// A new entity has reference count 0; whoever first takes a `ko::Reference` raises it.
class FORMWORK_EXPORT Entity : public ko::ReferenceCount {
public:
    /// Fired once, from the destructor, with the address of the dying entity. Its listeners
    /// run when the object is already only an `Entity`: they must not call the operations of
    /// the class it was.
    koRTB::Signal<const Entity*> deletedSignal;
    /// Fired with every change notice the entity sends.
    koRTB::Signal<EntityModification&> modifiedSignal;
    /// The entity's own receiving end, through which it listens to other signals.
    koRTB::SignalClient signalClient;

protected:
    Entity();
    /// A new entity: the copy has no listeners of its own and is counted on its own.
    Entity(const Entity&);
    /// Keeps this entity's own listeners.
    Entity& operator=(const Entity&) noexcept { return *this; }

    /// Tells the listeners of `deletedSignal`, then leaves the count of live entities.
    ~Entity() override;

    /// Broadcasts `mod` unchanged to the listeners of `modifiedSignal`.
    virtual void sendMessage(EntityModification& mod) const;

    /// Broadcasts a `General` notice from this entity, caused by `mod`: the way an entity that
    /// listens to another tells its own listeners that it changed because of `mod`.
    virtual void resendMessage(EntityModification& mod) const;
};

} // namespace koGeom
