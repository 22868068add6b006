// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

class PreferenceStore;
namespace Ui {
class PreferencesWindowController;
}

// The preferences window: two sliders bound to the update interval and the number of
// networks plotted. Positions go to and come from the store through its mappings.
class PreferencesWindowController final : public QDialog
{
    Q_OBJECT
public:
    explicit PreferencesWindowController(PreferenceStore *store, QWidget *parent = nullptr);
    ~PreferencesWindowController() override;

    qint64 updateInterval() const;
    void setUpdateInterval(qint64 position);
    quint64 numberOfTopNetworks() const;
    void setNumberOfTopNetworks(quint64 position);
    qint64 updateIntervalValue() const;
    quint64 numberOfTopNetworksValue() const;

    // Re-reads both positions from the store (the window is shown again).
    void syncFromStore();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void updateLabels();

    std::unique_ptr<Ui::PreferencesWindowController> ui;
    PreferenceStore *m_store;
};
