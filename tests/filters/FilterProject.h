// A project with filters, and what their manager tells.
#pragma once

#include "filters/ProjectFilterManager.h"
#include "platform/project/ProjDb.h"
#include "tests/bins/BinProject.h"

namespace cutroom::test {

class FilterProject : public BinProject {
protected:
    FilterProject() { listen(); }
    ~FilterProject() override { filterGuard_.reset(); }

    static ProjectFilterManager& filters() { return ProjectFilterManager::instance(); }
    void listen() {
        filterGuard_ = filters().registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) { hearFilters(message); }),
            filters().changeMsgType());
        toldFilters_.clear();
    }
    void end() {
        filterGuard_.reset();
        BinProject::end();
    }
    void reopen(CurrentProject::Access access = CurrentProject::Access::readWrite) {
        end();
        open(access);
        listen();
    }
    // "130 Rushes": filters by name, when there are any of that cookie; "bin 768".
    void hearFilters(const NotifyMsg& message) {
        const auto* notice = message.getObjectAs<ContainerNotice>();
        ASSERT_TRUE(notice);
        std::string text = notice->container().valid() ? "bin" : "";
        for (const auto& record : notice->changes().records()) {
            text += (text.empty() ? "" : " ") + std::to_string(record.getType());
            for (const Cookie& one : record.getCookies())
                if (const auto filter = filters().getFilter(one))
                    text += " " + toUtf8(filter->getName());
        }
        toldFilters_.push_back(text);
    }

    static projdb::Record record(std::uint64_t id, unsigned kinds, eLogType type = kLogTypeSource) {
        projdb::Record made;
        made.cookie = Cookie('E', id);
        made.kinds = kinds;
        made.logType = type;
        made.start = 1;
        made.end = 2;
        made.setField("name", std::to_string(id));
        return made;
    }
    static void put(const projdb::Record& record) { EXPECT_TRUE(projdb::put(record).ok()); }
    // Numbers of edits and names of documents in a bin.
    static std::string contentOf(const BinData& bin) {
        std::string text;
        for (const AssetReference& one : bin.getCookies())
            text += (text.empty() ? "" : " ") + (one.cookie.type() == 'E'
                                                     ? std::to_string(one.cookie.id())
                                                     : std::string(1, one.cookie.type()));
        return text;
    }
    // Of a filter: "Clips: 1 2 | Subclips: 3"; "none" when there is no such filter.
    static std::string contentOf(const std::wstring& name) {
        const auto filter = filters().getFilterByName(name);
        if (!filter)
            return "none";
        std::string text;
        for (const auto& bin : filter->getResults())
            if (!bin->empty())
                text +=
                    (text.empty() ? "" : " | ") + toUtf8(bin->getName()) + ": " + contentOf(*bin);
        return text;
    }
    static FilterBins oneBin(const std::wstring& name, const std::vector<BinItem>& items) {
        auto bin = Kv::makePtr<FilterBinData>(name);
        bin->setContents(items);
        return {bin};
    }
    std::string filterFile(const Cookie& id) const {
        return folder_ / "film/groups/Filters/" + id.asString() + ".filter";
    }

    Kv::Ptr<Guard> filterGuard_;
    std::vector<std::string> toldFilters_;
};

} // namespace cutroom::test
