#include "filters/ImageFilter.h"

#include "bins/Document.h"
#include "filters/AssetsBin.h"
#include "platform/project/MediaKind.h"

namespace {

bool isPicture(const Document& document) {
    return cutroom::isStillImage(cutroom::toUtf8(document.getFileName()));
}

} // namespace

ImageFilter::ImageFilter() : SystemFilter("images", cutroom::kResFilterImages) {
    appendResult(Kv::makePtr<cutroom::AssetsBin>(getName(), "images", unsigned{projdb::kKindImage},
                                                 &isPicture));
}

ImageFilter::~ImageFilter() = default;

iProjectFilter::eVisibility ImageFilter::getDefaultVisibility() const { return kOptional; }
