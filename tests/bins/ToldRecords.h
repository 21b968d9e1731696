// What a container tells its listeners, as text.
#pragma once

#include "bins/ContainerBase.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"

#include <string>
#include <vector>

namespace cutroom::test {

// Listens to one container while it lives. One text for each telling: types, assets concerned by
// the number of their cookie, reason: "512:1,2 256 'undo'".
class ToldRecords {
public:
    explicit ToldRecords(const ContainerBase& container)
        : guard_(container.registerNotification(
              makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
                  texts.push_back(textOf(*message.getObjectAs<ContainerBase::Modifications>()));
              }),
              NotifyMsgTypeDictionary::instance().generalChangeMsgType())) {}

    // What was told since the last call.
    std::vector<std::string> take() { return std::exchange(texts, {}); }

    std::vector<std::string> texts;

private:
    static std::string textOf(const ContainerBase::Modifications& changes) {
        std::string text;
        for (const auto& record : changes.records()) {
            text += (text.empty() ? "" : " ") + std::to_string(record.getType());
            char mark = ':';
            for (const Cookie& asset : record.getCookies()) {
                text += mark + std::to_string(asset.id());
                mark = ',';
            }
        }
        return changes.getReason().empty() ? text : text + " '" + changes.getReason() + "'";
    }

    Kv::Ptr<Guard> guard_;
};

} // namespace cutroom::test
