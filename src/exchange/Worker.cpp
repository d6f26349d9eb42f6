#include "exchange/Worker.h"

bool Worker::Start() {
    mStarted = Create() == wxTHREAD_NO_ERROR && Run() == wxTHREAD_NO_ERROR;
    mFinished = !mStarted;
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
