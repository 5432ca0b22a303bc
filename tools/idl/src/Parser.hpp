// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Declarations.hpp"

namespace ovra::plex::idl
{

/// Reads modules and what is declared in them into the model of a context.
class Parser
{
public:
    explicit Parser(Context& context) : context_(context) {}

    /// Reads all of the text; what is wrong is reported.
    void parse();

private:
    void readDefinition();
    void readDeclaration(const Beginning& beginning);
    void readModule(const Beginning& beginning);
    Module& openModule(const Token& name);
    void checkForward();

    Context& context_;
    DeclarationTables tables_;
};

} // namespace ovra::plex::idl
