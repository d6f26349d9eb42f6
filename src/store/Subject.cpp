#include "store/Subject.h"

#include <algorithm>

void Subject::AddObserver(Observer* observer) {
    mObservers.push_back(observer);
}

void Subject::RemoveObserver(Observer* observer) {
    const auto found = std::find(mObservers.begin(), mObservers.end(), observer);
    if (found == mObservers.end()) {
        return;
    }
    if (mNotifying == 0) {
        mObservers.erase(found);
    } else {
        // A notice walks the list right now: leave an empty place for it to step over.
        *found = nullptr;
    }
}

void Subject::Notify() {
    if (mObservers.empty()) {
        return;
    }
    ++mNotifying;
    ++mNotice;
    // An observer added during the notice has seen the change already.
    const auto last = std::prev(mObservers.end());
    for (auto at = mObservers.begin();; ++at) {
        if (*at != nullptr) {
            (*at)->Update(this);
        }
        if (at == last) {
            break;
        }
    }
    --mNotifying;
    if (mNotifying == 0) {
        mObservers.remove(nullptr);
    }
}

void SubjectAttachment::Attach(Subject* subject, Observer* observer) {
    Detach();
    mpSubject = subject;
    mpObserver = observer;
    if (mpSubject != nullptr) {
        mpSubject->AddObserver(mpObserver);
    }
}

void SubjectAttachment::Detach() {
    if (mpSubject != nullptr) {
        mpSubject->RemoveObserver(mpObserver);
    }
    mpSubject = nullptr;
    mpObserver = nullptr;
}
