// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"

/// An object that others can depend on, and that can depend on others. Both sides know of each other, and each is told
/// when the other dies, so that no pointer dangles. Neither owns the other. One thread at a time.
class FENWICK_EXPORT BDependentProvider
{
public:
    BDependentProvider() = default;
    virtual ~BDependentProvider(); ///< tells providers and dependents, then forgets them
    BDependentProvider(const BDependentProvider&) = delete;
    BDependentProvider& operator=(const BDependentProvider&) = delete;

    void AddDependent(BDependentProvider* dependent);    ///< once, however often it is called; null is ignored
    void RemoveDependent(BDependentProvider* dependent); ///< nothing when it is not one
    bool HasDependent(const BDependentProvider* dependent) const;
    /// Calls ProcessProviderMessage on each, in order of adding. They may be added and removed meanwhile; those added
    /// are not called. The provider must outlive the call.
    void MessageDependents(int message, void* data);

    /// A provider of this object is being destroyed. Overriders call the base version, which forgets it.
    virtual void DeletingProvider(BDependentProvider* provider);
    /// A dependent of this object is being destroyed. Overriders call the base version, which forgets it.
    virtual void DeletingDependent(BDependentProvider* dependent);
    virtual void ProcessProviderMessage(BDependentProvider* provider, int message, void* data);

private:
    BArray<BDependentProvider*> mDependents; ///< null where one was removed while being messaged
    BArray<BDependentProvider*> mProviders;
    int mMessaging = 0; ///< depth of MessageDependents
};
