// FenwickBase: foundation of the VelmarBase project.
#include "base/BSubject.h"

BObserver::~BObserver()
{
    while (!mSubjects.IsEmpty())
        mSubjects[0]->Detach(this);
}

BSubject::~BSubject()
{
    for (BObserver* const observer : mObservers)
        if (observer)
            observer->mSubjects.Remove(this);
}

void BSubject::Attach(BObserver* observer)
{
    if (!observer || mObservers.Find(observer) >= 0)
        return;
    if (mObservers.AppendOrKeep(observer) && !observer->mSubjects.AppendOrKeep(this))
        mObservers.RemoveAt(mObservers.Count() - 1); // a link known on one side only would come to dangle
}

void BSubject::Detach(BObserver* observer)
{
    const std::int64_t at = observer ? mObservers.Find(observer) : -1;
    if (at < 0)
        return;
    if (mNotifying > 0)
        mObservers[at] = nullptr; // Notify walks the list and closes the gap
    else
        mObservers.RemoveAt(at);
    observer->mSubjects.Remove(this);
}

void BSubject::Notify(int message)
{
    ++mNotifying;
    const std::int64_t count = mObservers.Count(); // who attaches meanwhile hears of the next change
    for (std::int64_t i = 0; i < count; ++i)
        if (BObserver* const observer = mObservers[i])
            observer->Update(this, message);
    if (--mNotifying == 0)
        while (mObservers.Remove(nullptr))
            ;
}
