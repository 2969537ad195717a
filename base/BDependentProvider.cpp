// FenwickBase: foundation of the VelmarBase project.
#include "base/BDependentProvider.h"

// Both lists are taken apart from the front, each link being cut on both sides before anyone is told: whoever is told
// may change either list, or destroy further objects, and finds no pointer to what is already half gone.
BDependentProvider::~BDependentProvider()
{
    while (!mDependents.IsEmpty())
    {
        BDependentProvider* const dependent = mDependents[0];
        RemoveDependent(dependent);
        dependent->DeletingProvider(this);
    }
    while (!mProviders.IsEmpty())
    {
        BDependentProvider* const provider = mProviders[0];
        provider->RemoveDependent(this);
        provider->DeletingDependent(this);
    }
}

void BDependentProvider::AddDependent(BDependentProvider* dependent)
{
    if (!dependent || HasDependent(dependent))
        return;
    if (mDependents.AppendOrKeep(dependent) && !dependent->mProviders.AppendOrKeep(this))
        mDependents.RemoveAt(mDependents.Count() - 1); // a link known on one side only would come to dangle
}

void BDependentProvider::RemoveDependent(BDependentProvider* dependent)
{
    const std::int64_t at = dependent ? mDependents.Find(dependent) : -1;
    if (at < 0)
        return;
    if (mMessaging > 0)
        mDependents[at] = nullptr; // MessageDependents walks the list and closes the gap
    else
        mDependents.RemoveAt(at);
    dependent->mProviders.Remove(this);
}

bool BDependentProvider::HasDependent(const BDependentProvider* dependent) const
{
    return dependent && mDependents.Find(const_cast<BDependentProvider*>(dependent)) >= 0;
}

void BDependentProvider::MessageDependents(int message, void* data)
{
    ++mMessaging;
    const std::int64_t count = mDependents.Count(); // who is added meanwhile hears of the next message
    for (std::int64_t i = 0; i < count; ++i)
        if (BDependentProvider* const dependent = mDependents[i])
            dependent->ProcessProviderMessage(this, message, data);
    if (--mMessaging == 0)
        while (mDependents.Remove(nullptr))
            ;
}

void BDependentProvider::DeletingProvider(BDependentProvider* provider) { provider->RemoveDependent(this); }

void BDependentProvider::DeletingDependent(BDependentProvider* dependent) { RemoveDependent(dependent); }

void BDependentProvider::ProcessProviderMessage(BDependentProvider*, int, void*) {}
