// StatusHandler.cpp - the status handler's defaults.

#include "fileio/handlers/StatusHandler.h"

StatusHandler::~StatusHandler() = default;
void StatusHandler::StepProgress() {}
void StatusHandler::SetProgress(int) {}
void StatusHandler::UninitializeProgressControl() {}
bool StatusHandler::InitializeProgressControl(const char*, unsigned char, int, int) {
    return true;
}
bool StatusHandler::IsProgressControlActive() const {
    return false;
}
unsigned char StatusHandler::GetCurrentType() {
    return 0;
}
