#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

enum class RatingIcon : std::int8_t { unselected, selected };

/// Stars, or options with titles, in rows; once one is chosen, a button that hands the choice in.
/// Until then the choice is in the payload's record only. A payload that has one shows it.
///
/// Outlets: ratingStackContainerView, ratingViewStackView, submitButtonContainerView, submitButton.
/// Operation for interface files: actionSubmit:.
class CVNRatingComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNRatingComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    /// As many stars as the scale says, 5 where it is not between 1 and 20; or the options.
    void setupRatingButtons();
    /// In order; each one's tag is its index.
    const std::vector<ui::Button*>& ratingButtonArray() const { return ratingButtonArray_; }
    /// Draws the buttons for the chosen index; -1 for none.
    void updateRating(std::int64_t index);
    /// The payload's own star where it was downloaded, else the library's.
    std::shared_ptr<ui::Image> getRatingIconOfType(RatingIcon type) const;
    void tapRatingButton(ui::View& button);
    /// Shows the choice and writes it into the payload's record.
    void updateNotificationRating(std::int64_t index);
    /// Leaves the choice in the preferences and asks for the app to be opened.
    void actionSubmit(ui::View& button);

private:
    bool hasStars() const;
    std::int64_t chosenIndex() const;
    void setupSubmitButton();
    void addStars();
    void addOptions();
    void addRows(const std::vector<std::shared_ptr<ui::Button>>& buttons, std::size_t mostInRow,
                 double spacing);
    void mirror();

    ui::View* ratingStackContainerView_ = nullptr;
    ui::StackView* ratingViewStackView_ = nullptr;
    ui::View* submitButtonContainerView_ = nullptr;
    ui::Button* submitButton_ = nullptr;
    std::vector<ui::Button*> ratingButtonArray_;
    std::shared_ptr<ui::Image> selectedIcon_;
    std::shared_ptr<ui::Image> unselectedIcon_;
    foundation::Ref<CVNRat> rating_ = std::make_shared<CVNRat>();  // the payload's
};

}  // namespace tavrolin
