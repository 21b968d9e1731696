#include "bins/iAssetContainer.h"

iAssetContainer::~iAssetContainer() = default;
