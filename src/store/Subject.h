#pragma once

#include <list>

class Subject;

// Hears when a Subject has changed.
class Observer {
  public:
    virtual ~Observer() = default;
    virtual void Update(Subject* subject) = 0;
};

// Tells its observers of its changes, in the order in which they were added. Observers may be added
// and removed, also by themselves, during a notice.
class Subject {
  public:
    Subject() = default;
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    virtual void AddObserver(Observer* observer);
    // Removes the first match.
    virtual void RemoveObserver(Observer* observer);
    virtual void Notify();
    // Returns the number of the present notice, or 0. Each notice has its own, so that what one
    // observer read for it can serve the next.
    unsigned GetNotice() const { return mNotifying == 0 ? 0 : mNotice; }

  private:
    std::list<Observer*> mObservers;
    // The number of notices under way. Meanwhile a removed observer leaves a null in its place.
    int mNotifying = 0;
    unsigned mNotice = 0;
};

// Keeps an observer attached to a Subject while the attachment lives, so that no destructor can
// forget to detach. The subject must outlive the attachment, or be detached first.
class SubjectAttachment {
  public:
    SubjectAttachment() = default;
    SubjectAttachment(Subject* subject, Observer* observer) { Attach(subject, observer); }
    ~SubjectAttachment() { Detach(); }
    SubjectAttachment(const SubjectAttachment&) = delete;
    SubjectAttachment& operator=(const SubjectAttachment&) = delete;

    // Leaves the present subject, if any, and observes another; null for none.
    void Attach(Subject* subject, Observer* observer);
    void Detach();

  private:
    Subject* mpSubject = nullptr;
    Observer* mpObserver = nullptr;
};
