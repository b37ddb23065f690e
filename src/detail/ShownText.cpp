#include "detail/ShownText.h"

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

bool isSeen(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return QChar::isPrint(character) && category != QChar::Separator_Line
        && category != QChar::Separator_Paragraph;
}

} // namespace

QString shownText(const QString &text)
{
    QString shown;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t code =
            isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : char32_t{text[i].unicode()};
        if (isSeen(code))
            shown += text.sliced(i, isPair ? 2 : 1);
        else
            shown += u"<U+%1>"_s.arg(uint{code}, 4, 16, QLatin1Char('0')).toUpper();
        i += isPair ? 1 : 0;
    }
    return shown;
}

QString quotedHead(QStringView text)
{
    constexpr qsizetype kLongest = 40;
    const QString head = shownText(text.first(std::min(text.size(), kLongest)).toString());
    return u'\'' + head + (text.size() > kLongest ? u"…'"_s : u"'"_s);
}

} // namespace vex::detail
