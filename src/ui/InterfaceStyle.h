#pragma once

// Writes the client's look into the interface library's style; once, before the first frame.
void SetInterfaceStyle();
