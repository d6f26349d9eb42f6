#include "support/GuiTest.h"

#include <wx/evtloop.h>

void DrainEvents() {
    wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
    for (int round = 0; round < 3; ++round) {
        while (loop->Pending()) {
            loop->Dispatch();
        }
        wxTheApp->ProcessPendingEvents();
        loop->ProcessIdle();
    }
}

bool WaitFor(const std::function<bool()>& condition, int limitMilliseconds) {
    wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
    const wxStopWatch watch;
    while (!condition()) {
        if (watch.Time() > limitMilliseconds) {
            return false;
        }
        if (loop->DispatchTimeout(10) == -1) {
            wxTheApp->ProcessPendingEvents();
            loop->ProcessIdle();
        }
    }
    return true;
}

void ShowAndWait(wxTopLevelWindow& window) {
    window.Show();
    EXPECT_TRUE(WaitFor([&window] { return window.IsActive(); })) << "the window was not activated";
    // The size follows the activation by a message or two.
    wxSize size;
    EXPECT_TRUE(WaitFor([&window, &size] {
        const wxSize last = size;
        size = window.GetClientSize();
        return size == last;
    }));
    DrainEvents();
}

wxWindow* FindNamed(wxWindow& parent, const wxString& name) {
    wxWindow* const found = wxWindow::FindWindowByName(name, &parent);
    EXPECT_NE(found, nullptr) << "no window named " << name;
    return found;
}

wxWindow* FindById(wxWindow& parent, int id) {
    wxWindow* const found = parent.FindWindow(id);
    EXPECT_NE(found, nullptr) << "no window of id " << id;
    return found;
}

bool SendCommand(wxEvtHandler& handler, int id, int checked) {
    wxCommandEvent event(wxEVT_MENU, id);
    event.SetInt(checked);
    return handler.ProcessEvent(event);
}

std::string RuleOf(wxEvtHandler& handler, int id) {
    wxUpdateUIEvent event(id);
    if (!handler.ProcessEvent(event) || !(event.GetSetEnabled() || event.GetSetChecked())) {
        return "";
    }
    const bool isOn = !event.GetSetEnabled() || event.GetEnabled();
    return !isOn ? "off" : event.GetSetChecked() && event.GetChecked() ? "checked" : "on";
}

void Send(wxWindow& control, wxEventType type, int selection) {
    wxCommandEvent event(type, control.GetId());
    event.SetEventObject(&control);
    event.SetInt(selection);
    control.GetEventHandler()->ProcessEvent(event);
}

void Choose(wxWindow& parent, int choiceId, int selection) {
    auto& choice = Find<wxChoice>(parent, choiceId);
    choice.SetSelection(selection);
    Send(choice, wxEVT_CHOICE, selection);
}

bool SendKeyEvent(wxEventType type, wxWindow& window, int keyCode, int modifiers) {
    wxKeyEvent event(type);
    event.SetEventObject(&window);
    event.SetId(window.GetId());
    event.m_keyCode = keyCode;
    event.m_uniChar = keyCode < WXK_START ? static_cast<wxChar>(keyCode) : wxChar(0);
    event.SetControlDown((modifiers & wxMOD_CONTROL) != 0);
    event.SetShiftDown((modifiers & wxMOD_SHIFT) != 0);
    event.SetAltDown((modifiers & wxMOD_ALT) != 0);
    event.SetMetaDown((modifiers & wxMOD_META) != 0);
    return window.GetEventHandler()->ProcessEvent(event);
}

bool SendKeyDown(wxWindow& window, int keyCode, int modifiers) {
    return SendKeyEvent(wxEVT_KEY_DOWN, window, keyCode, modifiers);
}

void SendKeyUp(wxWindow& window, int keyCode) {
    SendKeyEvent(wxEVT_KEY_UP, window, keyCode);
}

void SendKey(wxWindow& window, int keyCode) {
    SendKeyDown(window, keyCode);
    SendKeyUp(window, keyCode);
}

void SendMouse(wxWindow& window, wxEventType type, const wxPoint& point, int rotation) {
    wxMouseEvent event(type);
    event.SetEventObject(&window);
    event.SetPosition(point);
    // A motion of these tests is a drag.
    event.m_leftDown = type == wxEVT_LEFT_DOWN || type == wxEVT_MOTION;
    event.m_wheelRotation = rotation;
    event.m_wheelDelta = 120;
    event.m_linesPerAction = 3;
    window.HandleWindowEvent(event);
}

ModalAnswers::~ModalAnswers() {
    EXPECT_TRUE(mAnswers.empty()) << "a dialog that was expected did not open";
    Unregister();
}

void ModalAnswers::Expect(std::initializer_list<int> answers) {
    for (const int answer : answers) {
        mAnswers.emplace_back([answer](wxDialog&) { return answer; });
    }
}

void ModalAnswers::Expect(std::function<int(wxDialog&)> answer) {
    mAnswers.push_back(std::move(answer));
}

void ModalAnswers::Then(std::function<void(wxDialog&)> act) {
    Expect([act = std::move(act)](wxDialog& dialog) {
        dialog.CallAfter([act, &dialog] { act(dialog); });
        return wxID_NONE;
    });
}

void ModalAnswers::ThenPress(int id) {
    Then([id](wxDialog& dialog) { Send(*FindById(dialog, id)); });
}

void ModalAnswers::ThenType(const wxString& text) {
    Expect([text](wxDialog& dialog) {
        dynamic_cast<wxTextEntryDialog&>(dialog).SetValue(text);
        return wxID_OK;
    });
}

void ModalAnswers::ThenChoose(const wxString& path) {
    Expect([path](wxDialog& dialog) {
        auto& chooser = dynamic_cast<wxFileDialog&>(dialog);
        chooser.SetPath(path);
        // It takes its time to look into the directory.
        EXPECT_TRUE(WaitFor([&] { return chooser.GetPath() == path; }));
        return wxID_OK;
    });
}

int ModalAnswers::Enter(wxDialog* dialog) {
    Seen seen{dialog->GetTitle(), wxString()};
    if (const auto* const box = dynamic_cast<wxMessageDialogBase*>(dialog)) {
        seen.Message = box->GetMessage();
    }
    Dialogs.push_back(seen);
    if (mAnswers.empty()) {
        ADD_FAILURE() << "unexpected dialog: " << seen.Title << ": " << seen.Message;
        return wxID_CANCEL;
    }
    const std::function<int(wxDialog&)> answer = std::move(mAnswers.front());
    mAnswers.pop_front();
    return answer(*dialog);
}

OwnWindows::OwnWindows() {
    wxSetEnv("XDG_CONFIG_HOME", mSettingsDirectory.Path("config"));
    wxSetEnv("XDG_DATA_HOME", mSettingsDirectory.Path("data"));
    wxFileName::Mkdir(mSettingsDirectory.Path("data"));
}

OwnWindows::~OwnWindows() {
    for (wxWindow* window :
         std::vector<wxWindow*>(wxTopLevelWindows.begin(), wxTopLevelWindows.end())) {
        if (!window->IsBeingDeleted()) {
            window->Destroy();
        }
    }
    DrainEvents();
}
