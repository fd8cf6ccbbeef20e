// Every exchange with the camera's registers: single registers and blocks, with up to three
// immediate attempts per access and an echo of each access on the console.
//
// Thread rules: called from the user-interface thread and from one worker at a time; the
// functions keep no state of their own between calls.
#pragma once

// Results: 1 success, 0 failure (the console shows the failing access).
int ReadRegister(int unit, unsigned short selector, unsigned short *value);
int WriteRegister(int unit, unsigned short selector, unsigned short value);
// length 1 to 2048; anything else is refused before the camera is asked.
int ReadRegisterBlock(int unit, unsigned short selector, unsigned char *destination, unsigned short length);
// length 0 to 2048; length 0 sends the command with no payload (a trigger).
int WriteRegisterBlock(int unit, unsigned short selector, const unsigned char *source, unsigned short length);
// One attempt only; a failure is echoed as a warning and still counts as written. Always 1.
int WriteRegisterBlockTolerant(int unit, unsigned short selector, const unsigned char *source,
                               unsigned short length);
