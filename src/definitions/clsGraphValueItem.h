#pragma once

#include <QString>

/// A named value with a scale and a state, kept as a "gValue" element.
class clsGraphValueItem
{
public:
    qint32 ItemScale = 0;
    QString ItemName = QStringLiteral("Un-named");
    QString ItemValue = QStringLiteral("0");
    QString ItemDesc;
    qint32 ItemState = 0;
    bool ItemIsGlobal = false;

    QString XMLData() const;
    /// A text without "<gValue" (in any case) leaves the item as it is. Throws Error on malformed
    /// XML and on numbers beyond 32 bits.
    void SetXMLData(const QString &text);
};
