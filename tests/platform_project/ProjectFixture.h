// A project in a folder of its own, and the notices it tells.
#pragma once

#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace cutroom::test {

class ProjectFixture : public testing::Test {
protected:
    using Access = CurrentProject::Access;
    using IfMissing = CurrentProject::IfMissing;

    void TearDown() override { EXPECT_TRUE(CurrentProject::close().ok()); }

    std::string folder() const { return temp_ / "film.project"; }
    std::string inFolder(const std::string& name) const { return folder() + "/" + name; }
    Status create() const {
        return CurrentProject::open(folder(), Access::readWrite, IfMissing::create);
    }
    Status reopen(Access access = Access::readWrite) const {
        if (Status status = CurrentProject::close(); !status)
            return status;
        return CurrentProject::open(folder(), access);
    }

    static projdb::Record record(std::uint64_t id, const std::string& name) {
        projdb::Record record;
        record.cookie = Cookie('E', id);
        record.kinds = projdb::kKindClip;
        record.logType = kLogTypeSource;
        record.end = static_cast<double>(id);
        record.setField("name", name);
        return record;
    }

    TempFolder temp_;
    LogLines log_;
};

} // namespace cutroom::test
