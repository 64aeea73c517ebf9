#include "forms/address_form.h"

#include "automation/conversion.h"
#include "database/connection.h"
#include "forms/lookup_list.h"
#include "forms/markup.h"
#include "runtime/concat.h"
#include "runtime/config.h"
#include "runtime/database_helpers.h"
#include "runtime/html_encode.h"
#include "runtime/text_helpers.h"
#include "runtime/web_text.h"

namespace vellum250::forms {

namespace {

constexpr int16_t kCountryListBit = 1024;
constexpr int16_t kCommentsBit = 2048;

struct Label {
  TextView key;
  TextView defaultText;
};

// A field with one text input.
struct TextField {
  int16_t bit;  // 0: always shown, always mandatory
  TextView AddressForm::*value;
  TextView opening;  // up to the value
  Label label;
  TextView validatorId;
  Label validatorLabel;
  // What stands for the field when it is not shown; nothing when `hiddenOpening` is empty.
  TextView hiddenOpening;
  TextView AddressForm::*hiddenValue;
};

// The order of the rows.
constexpr TextField kTextFields[] = {
    {4,
     &AddressForm::displayName,
     u"<input class=\"AnswerText\" type=\"text\" id=\"DisplayName\" name=\"DisplayName\" "
     u"maxlength=40 size=40 value=\"",
     {u"Display Name", u"Display Name:"},
     // Sites keep two texts: only the label's key has a blank.
     u"DisplayName",
     {u"DisplayName", u"Display Name:"},
     u"<input type=\"hidden\" id=\"DisplayName\" name=\"DisplayName\" value=\"",
     &AddressForm::displayName},
    {8,
     &AddressForm::differentiator,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Differentiator\" name=\"Differentiator\" "
     u"maxlength=40 size=40 value=\"",
     {u"Differentiator", u"Differentiator:"},
     u"Differentiator",
     {u"Differentiator", u"Differentiator:"},
     u"<input type=\"hidden\" id=\"Differentiator\" name=\"Differentiator\" value=\"",
     &AddressForm::differentiator},
    {0,
     &AddressForm::address1,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add1\" name=\"Add1\" maxlength=40 size=40 "
     u"value=\"",
     {u"Address1", u"Address:"},
     u"Add1",
     {u"Address1", u"Address:"},
     {},
     nullptr},
    {16,
     &AddressForm::address2,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add2\" name=\"Add2\" maxlength=40 size=40 "
     u"value=\"",
     {u"Address2", u""},
     u"Add2",
     {u"Address2", u""},
     u"<input type=\"hidden\" id=\"Add2\" name=\"Add2\" value=\"",
     &AddressForm::address2},
    {32,
     &AddressForm::address3,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add3\" name=\"Add3\" maxlength=40 size=40 "
     u"value=\"",
     {u"Address3", u""},
     u"Add3",
     {u"Address3", u""},
     // Callers rely on line 2 standing here too.
     u"<input type=\"hidden\" id=\"Add3\" name=\"Add3\" value=\"",
     &AddressForm::address2},
    {64,
     &AddressForm::town,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Town\" name=\"Town\" maxlength=40 size=40 "
     u"value=\"",
     {u"Town", u""},
     u"Town",
     {u"Town", u""},
     {},
     nullptr},
    {128,
     &AddressForm::county,
     u"<input class=\"AnswerText\" type=\"text\" id=\"County\" name=\"County\" maxlength=40 "
     u"size=40 value=\"",
     {u"County", u""},
     u"County",
     {u"County", u""},
     {},
     nullptr},
    {512,
     &AddressForm::postcode,
     // Pages read the name, whose case differs from that of the id.
     u"<input class=\"AnswerMoney\" type=\"text\" id=\"PostCode\" name=\"Postcode\" maxlength=15 "
     u"size=40 value=\"",
     {u"PostCode", u""},
     u"Postcode",
     {u"PostCode", u""},
     {},
     nullptr},
    {256,
     &AddressForm::country,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Country\" name=\"Country\" maxlength=40 "
     u"size=40 value=\"",
     {u"Country", u""},
     u"Country",
     {u"Country", u""},
     {},
     nullptr},
};

constexpr TextView kTextInputEnd = kJoined<kInputEnd, kInputCellEnd>;
constexpr TextView kReadOnlyTextInputEnd = kJoined<kReadOnlyInputEnd, kInputCellEnd>;

constexpr TextView kNineBlanks = u"         ";
constexpr TextView kTypeRow =
    kJoined<kRowStart, kCellStart, kNineBlanks, kMandatory, kCellEnd, kCellStart>;
constexpr TextView kMainRow = kJoined<kRowStart, kCellStart, kNineBlanks, kCellEnd, kCellStart>;

constexpr TextView kFindAddressButton =
    u"<div align=center><input class=\"AnswerButton\" id=\"PafButton\" name=\"PafButton\" "
    u"value=\"Find Address\" type=\"Button\" onclick=\"javascript: openPafWindow(this);\"></div>";

constexpr TextView kPafScriptFile =
    u"<script src=\"../common/paf.js\" language=\"JavaScript\" type=\"text/javascript\"></script>";
constexpr TextView kPafScriptToPrefix =
    u"<script onerror=\"null\" language=\"JavaScript\">\r\n"
    u"        prefix = '";
constexpr TextView kPafScriptFromPrefix =
    u"';\r\n"
    u"       //get the form object\r\n"
    u"        myForm=getFormName(prefix);\r\n"
    u"        //prepare the address information\r\n"
    u"        prepareAddressForPaf('', myForm);\r\n"
    u"       //setAddressValuesForPaf(prefix, myForm, '', '', '13 The Road', '', '', 'Surbiton', "
    u"'Surrey', 'KT1 2NU', 'Germany');\r\n"
    u"       //clearAddressForPaf(prefix, myForm);\r\n"
    u"</script>\r\n";

constexpr TextView kDefaultCountrySql =
    u"SELECT l.lookup_ref AS lr FROM lookup l, lookup_type lt WHERE l.lookup_type_ref = "
    u"lt.lookup_type_ref AND lt.lookup_type_code = 'CTRY' AND l.lookup_code = 'UK'";
constexpr TextView kCountriesSql =
    u"SELECT isNull(l.lookup_full_desc, '') AS lfd, l.lookup_ref AS lr FROM lookup l, lookup_type "
    u"lt WHERE l.lookup_type_ref = lt.lookup_type_ref AND lt.lookup_type_code = 'CTRY' AND "
    u"(l.valid_to is null OR l.valid_to > getdate()) ORDER BY l.lookup_full_desc";

// Writes the form from top to bottom into one text.
class AddressFormWriter {
 public:
  AddressFormWriter(CallReport report, const AddressForm& form) : report_(report), form_(form) {
    // A form with every field and label is some 5000 characters.
    out_.reserve(6144);
  }

  Text Write(bool& includePafScript) {
    const bool hasPaf = ConfigBoolean(u"globalEnablePaf");
    displayNameIsReadOnly_ = ConfigInteger(u"globalDisplayAsReadOnly") != 1;
    if (hasPaf) WritePafPrompt();
    for (const TextField& field : kTextFields) WriteTextField(field);
    if (IsBitSet(form_.shown, kCountryListBit)) WriteCountryList();
    WriteAddressType();
    WriteMain();
    if (IsBitSet(form_.shown, kCommentsBit)) WriteComments();
    WriteHidden(u"<input type=\"hidden\" id=\"EntityType\" name=\"EntityType\" value=\"",
                form_.entityType);
    Append(out_, u"<input type=\"hidden\" id=\"SysRef\" name=\"SysRef\" value=\"", form_.systemRef,
           kInputEnd, u"<input type=\"hidden\" id=\"LocRef\" name=\"LocRef\" value=\"",
           form_.locationRef, kInputEnd);
    WriteHidden(u"<input type=\"hidden\" id=\"AddValidate\" name=\"AddValidate\" value=\"",
                validator_);
    if (hasPaf) WritePafScript(includePafScript);
    return std::move(out_);
  }

 private:
  void WriteLabel(const Label& label) {
    texts_.Append(out_, kGeneralArea, label.key, label.defaultText);
  }

  void WriteHidden(TextView opening, TextView value) {
    out_.append(opening);
    AppendHtmlEncoded(out_, value);
    out_.append(kInputEnd);
  }

  void AddToValidator(TextView id, const Label& label) {
    Append(validator_, id, u",");
    texts_.Append(validator_, kGeneralArea, label.key, label.defaultText);
    validator_.push_back(u'|');
  }

  // The row up to its label, and the field's entry in the validator list.
  void StartRow(int16_t bit, TextView validatorId, const Label& validatorLabel) {
    const bool always = bit == 0;
    const bool mandatory = always || IsBitSet(form_.mandatory, bit);
    out_.append(always ? kAlwaysMandatoryRow : mandatory ? kMandatoryRow : kOptionalRow);
    if (mandatory) AddToValidator(validatorId, validatorLabel);
  }

  void WriteTextField(const TextField& field) {
    if (field.bit != 0 && !IsBitSet(form_.shown, field.bit)) {
      if (!field.hiddenOpening.empty()) WriteHidden(field.hiddenOpening, form_.*field.hiddenValue);
      return;
    }
    StartRow(field.bit, field.validatorId, field.validatorLabel);
    WriteLabel(field.label);
    Append(out_, kLabelToInput, field.opening);
    AppendHtmlEncoded(out_, form_.*field.value);
    const bool readOnly = field.value == &AddressForm::displayName && displayNameIsReadOnly_;
    out_.append(readOnly ? kReadOnlyTextInputEnd : kTextInputEnd);
  }

  void WritePafPrompt() {
    Append(out_, kRowStart, kWideCellStart, kLineEnd);
    WriteLabel({u"PAFText",
                u"Please enter the house number into address line 1 and the postcode and click "
                u"'find address'."});
    WriteLabel({u"PAFButton", kFindAddressButton});
    out_.append(kInputCellEnd);
  }

  void WriteCountryList() {
    const Text selected =
        form_.countryRef.empty() ? ToText(GetScalar(kDefaultCountrySql)) : Text(form_.countryRef);
    database::Recordset countries =
        database::Connection::Open(ComponentContext::Current().connectionString)
            ->Execute(kCountriesSql);
    if (countries.Eof()) return;
    constexpr Label kLabel{u"Country", u"Country"};
    StartRow(kCountryListBit, u"Cref", kLabel);
    WriteLabel(kLabel);
    Append(out_, kLabelToInput, u"     <select name=\"Cref\" id=\"Cref\" class=\"AnswerText\">");
    if (!IsBitSet(form_.mandatory, kCountryListBit)) {
      out_.append(u"<option value=\"-1\">");
      WriteLabel({u"NoCountryList", u"[Not Specified]"});
      out_.append(kOptionEnd);
    }
    for (; !countries.Eof(); countries.MoveNext()) {
      const Text reference = ToText(countries.Field(1));
      Append(out_, kOptionStart, reference, u"\"", reference == selected ? kSelected : TextView(),
             u">");
      texts_.Append(out_, kLookupArea, reference, ToText(countries.Field(0)));
      Append(out_, kOptionEnd, kLineEnd);
    }
    Append(out_, u"     </select>", kInputCellEnd);
  }

  void WriteAddressType() {
    if (form_.addressTypes.empty() || form_.addressType < 1) {
      Append(out_, u"<input type=\"hidden\" id=\"LocType\" name=\"LocType\" value=\"",
             form_.addressType, u"\"> ");
      return;
    }
    out_.append(kTypeRow);
    WriteLabel({u"LocType", u"Location Type"});
    out_.append(kLabelToInput);
    const Variant list =
        AddressDropDownList(report_, {.types = form_.addressTypes, .selected = form_.addressType});
    if (const Text* markup = list.If<Text>()) out_.append(*markup);
    out_.append(kInputCellEnd);
  }

  void WriteMain() {
    if (!form_.showsMain) {
      WriteHidden(u"     <input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" value=\"",
                  form_.main);
      return;
    }
    out_.append(kMainRow);
    WriteLabel({u"MainLocation", u"Main Location:"});
    out_.append(kLabelToInput);
    if (form_.main == u"Y") {
      Append(out_, kTicked,
             u"     <input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" value=\"Y\">");
    } else {
      out_.append(
          u"     <input type=\"checkbox\" class=\"AnswerCheckBox\" id=\"main_loc\" "
          u"name=\"main_loc\" value=\"Y\">");
    }
    out_.append(kInputCellEnd);
  }

  void WriteComments() {
    constexpr Label kLabel{u"LocationComments", u"Comments:"};
    const bool mandatory = IsBitSet(form_.mandatory, kCommentsBit);
    Append(out_, kRowStart, kCellStart, mandatory ? kMandatory : kOptional, kCellEnd,
           kTopCellStart);
    if (mandatory) AddToValidator(u"Comm", kLabel);
    WriteLabel(kLabel);
    Append(out_, kLabelToInput,
           u"       <textarea rows=\"4\" class=\"AnswerText\" id=\"Comm\" name=\"Comm\">");
    AppendHtmlEncoded(out_, form_.comments);
    Append(out_, u"</textarea>", kCellEnd, u"</tr>");
  }

  void WritePafScript(bool& includePafScript) {
    if (includePafScript) out_.append(kPafScriptFile);
    includePafScript = false;
    Append(out_, kPafScriptToPrefix, form_.pafPrefix, kPafScriptFromPrefix);
  }

  CallReport report_;
  const AddressForm& form_;
  bool displayNameIsReadOnly_ = true;
  WebTexts texts_;
  Text out_;
  Text validator_;  // the mandatory fields: id,label|id,label|
};

}  // namespace

Text BuildAddress(CallReport report, const AddressForm& form, bool& includePafScript) {
  return AddressFormWriter(report, form).Write(includePafScript);
}

}  // namespace vellum250::forms
