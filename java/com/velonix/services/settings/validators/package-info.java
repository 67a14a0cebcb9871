/**
 * Validators for common needs: {@link com.velonix.services.settings.validators.Range}, {@link
 * com.velonix.services.settings.validators.Choice}, {@link
 * com.velonix.services.settings.validators.Pattern} and {@link
 * com.velonix.services.settings.validators.Length}. Each is named together with an argument when an
 * entry is added, and judges an array by each of its elements unless it says otherwise. A key whose
 * values are of a class that the validator is not made for has its values refused.
 */
package com.velonix.services.settings.validators;
