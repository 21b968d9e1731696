// `iMultiBinContainer`: something that exposes several bins.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"

#include <vector>

class BinData;

// Held through `Kv::Ptr`. Implementations say on which thread they may be asked.
class CUTROOM_API iMultiBinContainer : public virtual iObject {
public:
    using Bins = std::vector<Kv::Ptr<BinData>>;

    ~iMultiBinContainer() override;

    // The bins, in the order in which they are shown.
    virtual Bins getBins() const = 0;
    // Takes a bin in and gives the one that stands for it here. By default takes none: empty.
    virtual Kv::Ptr<BinData> add(const Kv::Ptr<BinData>& bin);
    // Takes a bin out. By default none: false.
    virtual bool remove(const Kv::Ptr<BinData>& bin);
    // Exposes no bin. By default asks `getBins`.
    virtual bool empty() const;
};
