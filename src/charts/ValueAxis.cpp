#include "charts/ValueAxis.h"

#include "base/Numbers.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

enum class Prefixes { None, Si, Binary };

/// A power of 1000 or 1024 that values are divided by.
struct Prefix
{
    double factor = 1;
    QString text;
};

Prefixes prefixesOf(const QString &unit)
{
    const QString base = unit.section(u'/', 0, 0).trimmed();
    if (base == u"B" || base.compare(u"byte", Qt::CaseInsensitive) == 0 ||
        base.compare(u"bytes", Qt::CaseInsensitive) == 0)
        return Prefixes::Binary;
    static const QStringList scaling = {
        QStringLiteral("bit"), QStringLiteral("bits"), QStringLiteral("b"), QStringLiteral("bps"),
        QStringLiteral("Hz"),  QStringLiteral("W"),    QStringLiteral("V"), QStringLiteral("A"),
        QStringLiteral("J"),   QStringLiteral("Wh"),   QStringLiteral("VA")};
    return scaling.contains(base) ? Prefixes::Si : Prefixes::None;
}

/// The prefix that makes `max` a number from 1 to 999 (1,023). Units without prefixes get one only
/// when the number would be too long.
Prefix prefixFor(double max, const QString &unit)
{
    static constexpr std::array<char16_t, 7> large = {0, u'k', u'M', u'G', u'T', u'P', u'E'};
    static constexpr std::array<char16_t, 4> small = {0, u'm', 0xB5, u'n'};
    const Prefixes kind = prefixesOf(unit);
    const double base = kind == Prefixes::Binary ? 1024 : 1000;
    if (max == 0 || (kind == Prefixes::None && max < 100'000))
        return {};
    Prefix prefix;
    if (kind == Prefixes::Si && max < 1) {
        for (size_t i = 1; i < small.size() && max / prefix.factor < 1; ++i)
            prefix = {prefix.factor / base, QString(QChar(small[i]))};
        return prefix;
    }
    for (size_t i = 1; i < large.size() && max / prefix.factor >= base; ++i) {
        prefix.factor *= base;
        prefix.text = QString(QChar(large[i]));
        if (kind == Prefixes::Binary)
            prefix.text = prefix.text.toUpper() + u'i';
    }
    return prefix;
}

/// The next of 1, 2, 2.5, 5 and 10 times a power of ten.
double roundStep(double atLeast)
{
    const double power = std::pow(10, std::floor(std::log10(atLeast)));
    for (const double digit : {1.0, 2.0, 2.5, 5.0}) {
        if (digit * power >= atLeast * (1 - 1e-9))
            return digit * power;
    }
    return 10 * power;
}

/// Decimals that show a step exactly: 2 for 0.25.
int decimalsOf(double step)
{
    int decimals = 0;
    for (double scaled = step;
         decimals < 12 && std::abs(scaled - std::round(scaled)) > 1e-6 * scaled; scaled *= 10)
        ++decimals;
    return decimals;
}

/// 2e-8 instead of 2e-08.
QString shortExponent(QString text)
{
    const qsizetype sign = text.indexOf(u'e') + 1;
    if (sign > 0 && text.size() > sign + 2 && text[sign + 1] == u'0')
        text.remove(sign + 1, 1);
    return text;
}

QString axisNumber(double value, int decimals)
{
    if (decimals > 7)
        return shortExponent(QString::number(value, 'g', 4));
    return groupedNumber(value, decimals);
}

/// Widens a range to what the axis has to show: zero as a rule, and space beside a level line.
void widen(double &min, double &max)
{
    const double reach = std::max(std::abs(min), std::abs(max));
    if (reach == 0) {
        max = 1;
        return;
    }
    const double spread = max - min;
    const bool flat = spread <= 1e-9 * reach;
    if (!flat && spread < 0.2 * reach)
        return; // close together, far from zero
    if (flat && max > 0)
        max *= 1.1;
    else if (flat)
        min *= 1.1;
    min = std::min(min, 0.0);
    max = std::max(max, 0.0);
}

} // namespace

ValueAxis valueAxis(double min, double max, const QString &unit, int maxSteps)
{
    widen(min, max);
    const Prefix prefix = prefixFor(std::max(std::abs(min), std::abs(max)), unit);
    const double low = min / prefix.factor;
    const double high = max / prefix.factor;
    double step = roundStep((high - low) / std::max(1, maxSteps));
    double first = std::floor(low / step + 1e-9);
    double last = std::ceil(high / step - 1e-9);
    while (last - first > std::max(1, maxSteps)) { // the ends moved out to round numbers
        step = roundStep(step * 1.01);
        first = std::floor(low / step + 1e-9);
        last = std::ceil(high / step - 1e-9);
    }
    if (first == last)
        ++last;

    ValueAxis axis;
    const bool bare = unit.isEmpty() || prefixesOf(unit) == Prefixes::None;
    axis.unit = bare ? unit : prefix.text + unit;
    axis.min = first * step * prefix.factor;
    axis.max = last * step * prefix.factor;
    const int decimals = decimalsOf(step);
    for (double i = first; i <= last; ++i) {
        axis.ticks.push_back(i * step * prefix.factor);
        QString label = axisNumber(i == 0 ? 0 : i * step, decimals);
        if (bare && i != 0)
            label += prefix.text;
        axis.labels.push_back(label);
    }
    return axis;
}

ValueAxis percentAxis(int maxSteps)
{
    ValueAxis axis;
    axis.max = 100;
    const int steps = maxSteps >= 4 ? 4 : maxSteps >= 2 ? 2 : 1;
    for (int i = 0; i <= steps; ++i) {
        axis.ticks.push_back(100.0 * i / steps);
        axis.labels.push_back(QString::number(100 * i / steps) + u'%');
    }
    return axis;
}

QString readableValue(double value, const QString &unit)
{
    const Prefix prefix = prefixFor(std::abs(value), unit);
    const double scaled = value / prefix.factor;
    const double size = std::abs(scaled);
    QString text;
    if (size != 0 && (size < 1e-4 || size >= 1e7)) {
        text = shortExponent(QString::number(scaled, 'g', 4));
    } else {
        const int decimals = size >= 1000 || size == 0 ? 0 : size >= 100 ? 1 : size >= 1 ? 2 : 4;
        text = groupedNumber(scaled, decimals);
        if (text.contains(u'.')) {
            while (text.endsWith(u'0'))
                text.chop(1);
            if (text.endsWith(u'.'))
                text.chop(1);
        }
    }
    if (unit.isEmpty())
        return text + prefix.text;
    const bool closeUp = unit == u"%";
    return text + (closeUp ? QString() : QStringLiteral(" ")) + prefix.text + unit;
}
