#pragma once

#include <vector>

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

/// The action buttons' slot: buttons of its own on the layout with a small picture; on all others
/// it sets the system's buttons below the view, and is empty itself. Outlets:
/// actionButtonStackView, topSpaceConstraint, bottomSpaceConstraint.
class CVNActionButtonComponent : public CVNBaseComponentView {
public:
    using Actions = std::vector<platform::NotificationAction>;

    std::string_view className() const override { return "CVNActionButtonComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    /// What the system shows for these buttons of the payload.
    Actions getDefaultButton(const RecordList<CVNActionButton>& buttons) const;
    static Actions getDefaultNextPrevButton();
    platform::NotificationAction getDefaultReplyButton(const CVNReplyActionButton& button) const;

    void setupActionButtonView();
    /// Remembers the button and asks for the app to be opened.
    void tapActionButton(ui::View& button);

private:
    std::shared_ptr<ui::Button> makeButton(const CVNActionButton& button, std::int64_t index,
                                           const foundation::Value& style);

    ui::StackView* actionButtonStackView_ = nullptr;
    ui::LayoutConstraint* topSpaceConstraint_ = nullptr;
    ui::LayoutConstraint* bottomSpaceConstraint_ = nullptr;
};

}  // namespace tavrolin
