// A module of its own that adds a file type, as a plug-in of an application does.
#include <vex/FileTypes.h>

using namespace Qt::StringLiterals;

namespace {

const FileTypes::Type kFromPlugin("FROM_PLUGIN"_L1, {{u"plg"_s, u"plg2"_s, u"plg"_s}});
const FileTypes::Type kTakenName("CSV"_L1, {{u"plg3"_s}});

} // namespace
