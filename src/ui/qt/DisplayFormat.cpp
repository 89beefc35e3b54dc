#include "ui/qt/DisplayFormat.h"

#include <QDate>
#include <QLocale>
#include <QRegularExpression>
#include <QTime>

namespace daywyn {
namespace {

QDate dateOf(Instant at, const Calendar& calendar) {
    const DateParts p = calendar.parts(at);
    return QDate(p.year, p.month, p.day);
}

const QLocale& english() {
    static const QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    return locale;
}

} // namespace

QString DisplayFormat::dayTitle(Instant at, const Calendar& calendar) {
    return english().toString(dateOf(at, calendar), QStringLiteral("dddd d MMMM"));
}

QString DisplayFormat::shortDay(Instant at, const Calendar& calendar) {
    return english().toString(dateOf(at, calendar), QStringLiteral("ddd d MMM"));
}

QString DisplayFormat::time(Instant at, const Calendar& calendar) {
    const DateParts p = calendar.parts(at);
    return QStringLiteral("%1:%2")
        .arg(p.hour, 2, 10, QLatin1Char('0'))
        .arg(p.minute, 2, 10, QLatin1Char('0'));
}

QString DisplayFormat::dateTime(Instant at, Instant today, const Calendar& calendar) {
    if (calendar.isSameDay(at, today)) {
        return time(at, calendar);
    }
    return shortDay(at, calendar) + QLatin1Char(' ') + time(at, calendar);
}

QString DisplayFormat::editable(Instant at, const Calendar& calendar) {
    const DateParts p = calendar.parts(at);
    return QStringLiteral("%1-%2-%3 %4")
        .arg(p.year, 4, 10, QLatin1Char('0'))
        .arg(p.month, 2, 10, QLatin1Char('0'))
        .arg(p.day, 2, 10, QLatin1Char('0'))
        .arg(time(at, calendar));
}

std::optional<Instant> DisplayFormat::parseEditable(const QString& text, const Calendar& calendar) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*(\d{4})-(\d{1,2})-(\d{1,2})(?:\s+(\d{1,2}):(\d{2}))?\s*$)"));
    const auto match = pattern.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const int year = match.captured(1).toInt();
    const int month = match.captured(2).toInt();
    const int day = match.captured(3).toInt();
    const int hour = match.captured(4).isEmpty() ? 0 : match.captured(4).toInt();
    const int minute = match.captured(5).isEmpty() ? 0 : match.captured(5).toInt();
    // The calendar would roll 31 April into May; a typo must be refused instead.
    if (!QDate::isValid(year, month, day) || hour > 23 || minute > 59) {
        return std::nullopt;
    }
    return calendar.date(year, month, day, hour, minute);
}

} // namespace daywyn
