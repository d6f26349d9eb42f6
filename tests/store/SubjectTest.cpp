#include "store/Subject.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

// Writes its name when it is told, then acts.
class Listener : public Observer {
  public:
    Listener(Subject& subject, std::string name, std::string& told)
        : mName(std::move(name)), mTold(told), mAttachment(&subject, this) {}
    void Update(Subject*) override {
        mTold += mName;
        if (Act) {
            Act();
        }
    }
    std::function<void()> Act;

  private:
    std::string mName;
    std::string& mTold;
    SubjectAttachment mAttachment;
};

}  // namespace

TEST(Subject, ObserversMayComeAndGoWhileANoticeIsUnderWay) {
    Subject subject;
    std::string told;
    auto a = std::make_unique<Listener>(subject, "a", told);
    auto b = std::make_unique<Listener>(subject, "b", told);
    auto c = std::make_unique<Listener>(subject, "c", told);
    std::unique_ptr<Listener> d;
    // The second goes before its turn and the last with it, in a notice inside the notice; a new
    // one comes and hears only of later changes.
    a->Act = [&] {
        if (b == nullptr) {
            return;
        }
        b.reset();
        subject.Notify();
        c.reset();
        d = std::make_unique<Listener>(subject, "d", told);
    };
    subject.Notify();
    EXPECT_EQ(told, "aac");
    told.clear();
    subject.Notify();
    EXPECT_EQ(told, "ad");
}
