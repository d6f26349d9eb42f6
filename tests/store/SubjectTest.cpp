#include "store/Subject.h"

#include "support/StoreFixture.h"

namespace {

// Writes its name when it is told, then acts.
struct Listener : Observer {
    Listener(Subject& subject, char name, std::string& told)
        : Name(name), Told(told), Attachment(&subject, this) {}
    void Update(Subject*) override {
        Told += Name;
        Act();
    }

    const char Name;
    std::string& Told;
    std::function<void()> Act = [] {};
    SubjectAttachment Attachment;
};

TEST(Subject, ObserversMayComeAndGoWhileANoticeIsUnderWay) {
    Subject subject;
    std::string told;
    const auto add = [&](char name) { return std::make_unique<Listener>(subject, name, told); };
    auto a = add('a');
    auto b = add('b');
    auto c = add('c');
    std::unique_ptr<Listener> d;
    // The second goes before its turn and the last with it, in a notice inside the notice; a new
    // one comes and hears only of later changes.
    a->Act = [&] {
        if (b != nullptr) {
            b.reset();
            subject.Notify();
            c.reset();
            d = add('d');
        }
    };
    subject.Notify();
    EXPECT_EQ(told, "aac");
    subject.Notify();
    EXPECT_EQ(told, "aacad");
}

}  // namespace
