#include "ui/OfflineUIState.h"

OfflineUIState CreateOfflineUIState() { return OfflineUIState{}; }

void ResetOfflineUIState(OfflineUIState& state) { state.page = offlinepages::MainMenu{}; }
