#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <utility>

// Ends the output of a failed test with how to run it alone, and with what a test of windows had on
// the screen at its first failure. GoogleTest owns it.
class FailureReport : public ::testing::EmptyTestEventListener {
  public:
    // The function describes the screen for the test of the given name, in whole lines.
    using Screen = std::string (*)(const std::string& test);

    static void Install(Screen screen = nullptr) {
        ::testing::UnitTest::GetInstance()->listeners().Append(new FailureReport(screen));
    }

  private:
    explicit FailureReport(Screen screen) : mpScreen(screen) {}

    static std::string NameOf(const ::testing::TestInfo& test) {
        return std::string(test.test_suite_name()) + "." + test.name();
    }

    void OnTestStart(const ::testing::TestInfo& test) override {
        mpTest = &test;
        mSeen.clear();
    }

    // GoogleTest is locked meanwhile, and asking it for the test would wait for ever.
    void OnTestPartResult(const ::testing::TestPartResult& result) override {
        if (result.failed() && mSeen.empty() && mpScreen != nullptr && mpTest != nullptr) {
            mSeen = mpScreen(NameOf(*mpTest));
        }
    }

    void OnTestEnd(const ::testing::TestInfo& test) override {
        if (test.result()->Failed()) {
            std::cout << mSeen << "to run it alone: ctest --preset " VELOMIND_PRESET " -R '^"
                      << NameOf(test) << "'" << std::endl;
        }
        mpTest = nullptr;
    }

    const Screen mpScreen;
    const ::testing::TestInfo* mpTest = nullptr;
    std::string mSeen;
};
