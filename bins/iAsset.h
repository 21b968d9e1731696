// `iAsset`: an asset that lasts beyond one view of it: it has an identity, times, attributes, and
// batches of changes.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"
#include "platform/project/LogAttribute.h"

#include <cstdint>

// Any thread may call; the implementation locks.
class CUTROOM_API iAsset : public virtual iObject {
public:
    ~iAsset() override;

    virtual Cookie getAssetID() const = 0;
    // Seconds since 1970; 0: not known yet.
    virtual std::uint32_t getCreationTime() const = 0;
    virtual std::uint32_t getModificationTime() const = 0;
    // The name under which another system knows it; empty: none.
    virtual LightweightString<wchar_t> getExternalID() const = 0;
    virtual void setExternalID(const LightweightString<wchar_t>& id) = 0;
    // Changes between the two are told as one, when the outermost batch ends, with the reason given
    // there. See `ContainerModifier`.
    virtual void beginModifications() = 0;
    virtual void endModifications(LightweightString<char> reason = {}) = 0;
    // The value of an attribute as UTF-8; empty for one that this kind of asset does not have.
    virtual LightweightString<char> getAttribute(const LogAttribute& attribute) const = 0;
    // Sets one; ignored for attributes that cannot be set.
    virtual void setAttribute(const LogAttribute& attribute,
                              const LightweightString<wchar_t>& value) = 0;
    virtual void setAttribute(const LogAttribute& attribute,
                              const LightweightString<char>& value) = 0;
};
