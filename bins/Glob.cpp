#include "bins/Glob.h"

Glob::~Glob() = default;
