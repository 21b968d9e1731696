// `cutroom::TagFilter`: the project filter that shows everything that carries one tag.
#pragma once

#include "filters/FieldIndex.h"
#include "filters/ProjectFilterBase.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// Any thread, as `ProjectFilterBase`.
class CUTROOM_API TagFilter final : public ProjectFilterBase {
public:
    // `index` is that of the field "tags"; its owner must bring it up to date before it tells the
    // filter of changed assets.
    TagFilter(const std::string& tag, std::shared_ptr<FieldIndex> index);
    ~TagFilter() override;

    eResultsType getResultsType() const override;
    LightweightString<wchar_t> getDescription() const override;
    // Its bin follows the project: it stays.
    void clear() override;

    // The tags in a text: what stands between commas and semicolons, without the white space
    // around.
    static std::vector<std::string> tagsOf(std::string_view text);
    static Cookie idOf(const std::string& tag);
    static Cookie binOf(const std::string& tag);

protected:
    eVisibility getDefaultVisibility() const override;
};

} // namespace cutroom
