#include "base/Worker.h"

bool Worker::Start() {
    mStarted = Create() == wxTHREAD_NO_ERROR && Run() == wxTHREAD_NO_ERROR;
    // The worker may have ended by now, so a start that succeeded must leave the flag alone.
    if (!mStarted) {
        mFinished = true;
    }
    return mStarted;
}

void Worker::Join() {
    if (mStarted) {
        Wait();
        mStarted = false;
    }
}

wxThread::ExitCode Worker::Entry() {
    Work();
    mFinished = true;
    return nullptr;
}
