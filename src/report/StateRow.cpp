#include "report/StateRow.h"

#include "core/Numbers.h"

namespace {

QString countText(double count)
{
    return plainNumber(count);
}

QString bold(const QString &text)
{
    return QLatin1String("<b>") + text + QLatin1String("</b>");
}

Placeholders rowValues(const QString &label, const QString &successes, const QString &failures,
                       const QString &tests, const QString &rate, const QString &link)
{
    return {{QLatin1String("sample.label"), label},     {QLatin1String("successcount"), successes},
            {QLatin1String("criticalcount"), failures}, {QLatin1String("totalcount"), tests},
            {QLatin1String("successrate"), rate},       {QLatin1String("sample.href"), link}};
}

} // namespace

QString StateRow::rateText() const
{
    return tests() == 0 ? QStringLiteral("n/a") : fixedNumber(successes / tests() * 100, 2);
}

QString StateRow::filled(const QString &rowTemplate) const
{
    const QString link = devicePage.isEmpty()
                             ? QString()
                             : QStringLiteral(" href=\"%1\"").arg(htmlEscaped(devicePage));
    return fillTemplate(rowTemplate, rowValues(label, countText(successes), countText(failures),
                                               countText(tests()), rateText(), link));
}

QString StateRow::filledAsTotal(const QString &rowTemplate) const
{
    return fillTemplate(rowTemplate,
                        rowValues(bold(QStringLiteral("Total")), bold(countText(successes)),
                                  bold(countText(failures)), bold(countText(tests())),
                                  bold(rateText()), QString()));
}

void StateRow::addCounts(CsvText &csv) const
{
    csv.number(successes).number(failures).number(tests());
    csv.fixed(tests() == 0 ? 0 : successes / tests() * 100);
}
