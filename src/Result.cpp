#include <vex/PlotBase.h>
#include <vex/Result.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <optional>

// Every type that a function of this library returns in a Result, compiled whole here: a member
// that only one application uses cannot break unseen.
namespace vex {

template class Result<int>;
template class Result<double>;
template class Result<bool>;
template class Result<QString>;
template class Result<QByteArray>;
template class Result<QList<double>>;
template class Result<QList<QString>>;
template class Result<QJsonObject>;
template class Result<QJsonArray>;
template class Result<QMap<QString, QVariant>>;
template class Result<std::optional<QString>>;
template class Result<std::optional<QByteArray>>;
template class Result<std::optional<QMap<QString, QVariant>>>;
template class Result<PlotBase>;

} // namespace vex
