#pragma once

#include <QColor>
#include <QFont>
#include <QSizeF>

namespace vexcli {

inline constexpr QSizeF kPictureSize(800.0, 500.0); // points
inline constexpr double kMargin = 20.0; // around everything, points
// Okabe and Ito's palette: distinct for readers with colour-blindness too
inline constexpr QRgb kColours[] = {
    0xff0072b2, 0xffd55e00, 0xff009e73, 0xffcc79a7, 0xffe69f00, 0xff56b4e9};

inline QFont plotFont(double size, bool bold = false)
{
    QFont result(QStringLiteral("DejaVu Sans"));
    result.setPixelSize(static_cast<int>(size));
    result.setBold(bold);
    return result;
}

} // namespace vexcli
