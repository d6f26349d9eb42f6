#include "base/Job.h"

#include <wx/intl.h>

#include <new>
#include <stdexcept>

bool Job::Start() {
    mIsStarted = Create() == wxTHREAD_NO_ERROR && Run() == wxTHREAD_NO_ERROR;
    // The task may have ended by now, so a start that succeeded must leave the flag alone.
    if (!mIsStarted) {
        mIsFinished = true;
    }
    return mIsStarted;
}

void Job::RunHere() {
    try {
        mTask(mIsCancelled);
    } catch (...) {
        mpThrown = std::current_exception();
    }
    mIsFinished = true;
    if (mAtEnd) {
        mAtEnd();
    }
}

void Job::Join() {
    if (std::exchange(mIsStarted, false)) {
        Wait();
    }
}

void Job::Cancel() {
    AskToStop();
    Join();
}

wxString Job::TakeFailure() {
    try {
        RethrowFailure();
        return wxString();
    } catch (const std::bad_alloc&) {
        return _("There is not enough memory.");
    } catch (const std::length_error&) {
        return _("There is not enough memory.");
    } catch (const std::exception& thrown) {
        return wxString::Format(_("Unexpected Error (%s)"), thrown.what());
    } catch (...) {
        return _("Unexpected Error");
    }
}

void Job::RethrowFailure() {
    if (const std::exception_ptr thrown = std::exchange(mpThrown, nullptr)) {
        std::rethrow_exception(thrown);
    }
}

wxThread::ExitCode Job::Entry() {
    RunHere();
    return nullptr;
}
