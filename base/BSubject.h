// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"

class BSubject;

/// Is told of changes of the subjects it is attached to. Detaches itself from all of them when it dies.
class FENWICK_EXPORT BObserver
{
public:
    BObserver() = default;
    virtual ~BObserver();
    BObserver(const BObserver&) = delete;
    BObserver& operator=(const BObserver&) = delete;
    virtual void Update(BSubject* subject, int message) = 0;

private:
    friend class BSubject; // the two lists mirror each other
    BArray<BSubject*> mSubjects;
};

/// Something that observers can watch. Observers are not owned; they may attach and detach while being notified.
class FENWICK_EXPORT BSubject
{
public:
    BSubject() = default;
    virtual ~BSubject();
    BSubject(const BSubject&) = delete;
    BSubject& operator=(const BSubject&) = delete;
    void Attach(BObserver* observer); ///< once, however often it is called; null is ignored
    void Detach(BObserver* observer);
    /// Calls Update on each attached observer, in order of attaching. Those attached meanwhile are not called. The
    /// subject must outlive the call.
    void Notify(int message);

private:
    friend class BObserver;
    BArray<BObserver*> mObservers; ///< null where one was detached while being notified
    int mNotifying = 0;            ///< depth of Notify
};
