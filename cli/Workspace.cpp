#include "cli/Workspace.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"

#include <filesystem>
#include <system_error>

namespace cutroom::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kDefaultFolder = "cutroom.project";

EmbeddedHost::Options hostOptions(const Options& options) {
    return options.repeatable ? EmbeddedHost::repeatable() : EmbeddedHost::Options();
}

} // namespace

std::string projectFolder(const Options& options) {
    if (!options.project.empty())
        return options.project;
    std::error_code failure;
    for (fs::path here = fs::current_path(failure); !failure && !here.empty();
         here = here.parent_path()) {
        if (fs::exists(here / "project.json", failure))
            return here.string();
        if (here == here.root_path())
            break;
    }
    return kDefaultFolder;
}

Workspace::Workspace(const Options& options)
    : folder_(projectFolder(options)), host_(hostOptions(options)), project_(host_) {}

Status Workspace::open(Use use) {
    const auto access =
        use == Use::read ? CurrentProject::Access::readOnly : CurrentProject::Access::readWrite;
    const auto ifMissing = use == Use::writeOrCreate ? CurrentProject::IfMissing::create
                                                     : CurrentProject::IfMissing::fail;
    if (use != Use::read) { // a reading command makes only those that it asks for
        DocumentManager::instance();
        AssetAssociationGroupManager::instance();
        BinManager::instance();
    }
    const Status opened = project_.open(folder_, access, ifMissing);
    std::error_code failure;
    if (opened.code() == StatusCode::notFound && use != Use::writeOrCreate &&
        !fs::exists(fs::path(folder_) / "project.json", failure))
        return {opened.code(), opened.file(),
                "there is no project; `cutroom import FILE` makes one"};
    return opened;
}

} // namespace cutroom::cli
