// Model profiles: the three camera models the engineering window serves.
#pragma once

// The model ring's selected position: 0, 1 or 2 (other values change nothing).
int CurrentModelProfile();
void ConfigureModelPanels();
int Model_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
