#pragma once

#include <QDialog>

#include <optional>

class QLineEdit;
class QListWidget;

namespace kilnova {

/// The choice of an external data source: one of those the ODBC driver manager knows, or a
/// connection string typed in. What this platform has instead of a connection prompt.
class CChooseDataSource final : public QDialog {
    Q_OBJECT
public:
    /// `sources` are the names to offer (OdbcCatalog::dataSources()).
    explicit CChooseDataSource(const QStringList& sources, QWidget* parent = nullptr);

    /// The typed connection string when there is one, else the chosen data source.
    QString connection() const;

    /// Runs the dialog over the driver manager's data sources; nothing on Cancel.
    static std::optional<QString> ask(QWidget* parent);

private:
    QListWidget* mSources;
    QLineEdit* mTyped;
};

} // namespace kilnova
