// What the parts of the consumer share.
#pragma once

// Notes and prints a fault unless `condition` holds.
void expect(bool condition, const char* what);

// viewing.cpp
void viewAnEdit();
