#pragma once

#include <list>

class Subject;

// Is told when a Subject has changed.
class Observer {
  public:
    virtual ~Observer() = default;
    virtual void Update(Subject* subject) = 0;
};

// Tells its observers of its changes, in the order in which they were added. An observer may remove
// itself or others, and may be added, while a notice is under way.
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
    // The number of the notice that is under way, or 0 while none is. Each notice has its own, so
    // that what one observer read for it can serve the next.
    unsigned GetNotice() const { return mNotifying == 0 ? 0 : mNotice; }

  private:
    std::list<Observer*> mObservers;
    // How many notices are under way. While any is, a removed observer leaves a null behind.
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
