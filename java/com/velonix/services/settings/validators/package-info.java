/**
 * Validators for common needs: {@link com.velonix.services.settings.validators.Range}, {@link
 * com.velonix.services.settings.validators.Choice}, {@link
 * com.velonix.services.settings.validators.Pattern} and {@link
 * com.velonix.services.settings.validators.Length}. A key or node is added with the class of its
 * validator and an argument. Each element of an array is validated, except by {@code Length}.
 * Values of a class that a validator does not support are refused.
 */
package com.velonix.services.settings.validators;
