// What clients of a playing edit are told about its transport.
#pragma once

// Told when the transport starts to move an edit, when it has stopped moving it, and when its
// speed changes while it plays.
enum PlayStateNotifyType : int {
    kPlayStateStarted = 1,
    kPlayStateStopped = 2,
    kPlayStateSpeedChanged = 3,
};
