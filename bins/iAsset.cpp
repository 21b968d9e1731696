#include "bins/iAsset.h"

iAsset::~iAsset() = default;
