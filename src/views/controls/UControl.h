#pragma once

#include "binding/Value.h"
#include "views/UView.h"

namespace qorl {

/// A view that shows and edits one `Binding::Value`.
///
/// A control never stores what it displays: it follows its value, and keeps working on a fresh number from 0
/// to 100 when it has none or when its value goes. Gestures are bracketed by `beginEdit` and `endEdit`. A
/// change of the value redraws the control with the next pass of the event loop. Threading: the
/// user-interface thread only.
class UControl : public UView {
    QORL_CLASS(UControl, UView)

public:
    /// On a fresh value from 0 to 100, which isn't followed: for those that get another one at once.
    UControl();
    /// A null `value` stands for a fresh one from 0 to 100. The enabled state is the value's.
    UControl(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    /// Follows `value` from now on; null stands for a fresh one from 0 to 100. An attached control signals
    /// the change to all dependents of the new value.
    virtual void setValue(Binding::Value* value);
    /// Redraws the whole control.
    virtual void update();
    /// Never null; not counted.
    virtual Binding::Value* getValueObject() const;
    virtual void setStyle(uint32_t style);
    virtual void setControlValue(int32_t value);
    virtual int32_t getControlValue() const;
    virtual int32_t getControlMin() const;
    virtual void setControlMin(int32_t min);
    virtual int32_t getControlMax() const;
    virtual void setControlMax(int32_t max);
    virtual int32_t limitControlValue(int32_t value) const;
    /// The place in the range, 0 to 1.
    virtual float getNormalized() const;
    virtual void setNormalizedValue(float normalized, bool perform);
    virtual uint32_t getStyle() const;
    /// Calls `setStyle` only when that sets a bit.
    virtual void addStyle(uint32_t bits);
    /// Who hears of edits; not counted.
    virtual void setTarget(CmObject* target, int32_t tag);
    virtual void setTag(int32_t tag);
    virtual int32_t getTag() const;
    virtual void setContentColor(uint32_t color);
    virtual bool getContentColor(uint32_t& color) const;
    virtual void setSecondValue(Binding::Value* value);
    virtual Binding::Value* getSecondValue() const;
    /// For subclasses that hold further values: puts `value` into `slot` by the rules of `setValue`.
    virtual void swapValueReference(Ref<Binding::Value>& slot, Binding::Value* value);
    virtual void onDefaultChanged();
    virtual void onValueAttached();

    void update(FInterface* changedObject, int32_t message) override {
        UView::update(changedObject, message);
    }
    void notify(CmObject* changedObject, int32_t message) override;
    int32_t handleMessage(FMessage* message) override;
    bool hasTooltip() const override;
    bool getTooltip(String& text, CmPoint point, CmRect& area) const override;
    void setValuesEnabled(bool enabled) override;
    void focusGained() override;
    void focusLost() override;
    void drawFocus(bool focused) override;
    /// The title, or what the target of the value calls that.
    bool getAccessibleName(String& name) const override;
    bool getAccessibleValue(String& value) const override;
    bool getAccessibleRange(AccessibleRange& range) const override;
    bool setAccessibleValue(double value) override;

    bool hasStyle(uint32_t bits) const { return (style_ & bits) != 0; }
    /// The command that the control stands for; false unless both parts are there.
    bool getCommand(String& category, String& name) const;
    void setCommand(const ConstString& category, const ConstString& name);
    /// Marks the control that Return presses in its dialog.
    void setDefaultControl(bool isDefault);
    bool isDefaultControl() const;

protected:
    ~UControl() override;

    Binding::IBoundValue* bound() const { return value_->bound(); }
    bool isValueEnabled() const { return value_->bound()->isEnabled(); }
    /// Takes the enabled state from the value; gives the focus away when that turned off.
    void refresh();
    /// Tells a target that takes clicks which modifiers were held.
    void notifyTargetOfClick();
    /// One turn of the wheel; false lets the parent have it.
    bool stepByWheel(double distance, bool inverted);

private:
    void follow(Binding::Value* value);
    void loseValue();

    bool getTooltipFromController(String& text, CmPoint point) const;

    Ref<Binding::Value> value_;
    uint32_t style_ = 0;
    uint32_t contentColor_ = 0;
    Ref<Binding::Value> secondValue_;
};

} // namespace qorl
