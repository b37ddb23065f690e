#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <functional>

#include <vex/Error.h>

namespace vexcli {

/// Takes a list of whole numbers apart that comes in pieces: "66, 67", "66 67" or "[66,67]", with
/// line ends wherever blanks may be, and with or without a byte order mark. A text that is no
/// number is not repeated in the error: it may be a secret that was meant for another program.
class NumberListReader
{
public:
    /// @param take  gets each number and its position, from 0
    explicit NumberListReader(std::function<vex::Error(int number, qint64 position)> take);

    /// The next piece, of any length.
    vex::Error add(QByteArrayView piece);
    /// There is no further piece.
    vex::Error end();

private:
    enum Place {
        Start, ///< before everything
        First, ///< behind '[': a number or ']'
        Next, ///< behind a comma: a number
        Behind, ///< behind a number: a comma, a number or ']'
        End, ///< behind ']': nothing
    };

    vex::Error takeMark(char mark);
    vex::Error takeWord();
    vex::Error problem(const QString &text) const;

    std::function<vex::Error(int number, qint64 position)> m_take;
    Place m_place = Start;
    bool m_isInBrackets = false;
    QByteArray m_word; // as much as there is of it
    qint64 m_position = 0; // of the next number
};

} // namespace vexcli
